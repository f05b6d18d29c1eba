#include "cli/terminal/CountText.h"

#include <unistd.h>

#include "cli/terminal/Console.h"
#include "cli/terminal/Diagnostic.h"

namespace tavlen::cli {

std::string countText(std::size_t count, std::string_view one, std::string_view several) {
  constexpr std::size_t kGroup = 3;
  std::string text = std::to_string(count);
  for (std::size_t i = text.size(); i > kGroup; i -= kGroup) text.insert(i - kGroup, ",");
  return text + " " + std::string(count == 1 ? one : several);
}

void printCounts(std::string_view counts) {
  if (!hasJSONMessages() && ::isatty(STDERR_FILENO) == 1) printMessage(std::string(counts) + "\n");
}

}  // namespace tavlen::cli
