#include "cli/work/HeaderFiles.h"

#include <cstddef>
#include <string_view>

#include "cli/terminal/Console.h"
#include "tavlen/foundation/text/EscapedText.h"
#include "tavlen/introspection/headers/ClassHeaders.h"

namespace tavlen::cli {

namespace {

std::string counted(std::size_t count, std::string_view one, std::string_view several) {
  return std::to_string(count) + " " + std::string(count == 1 ? one : several);
}

}  // namespace

void writeHeaders(const ClassParser::Classes& classes,
                  const std::vector<StaticClassParser::Category>& categories,
                  const std::string& folder) {
  const ClassHeaders::Written written = ClassHeaders::write(classes, categories, folder);
  std::string text = "tavlen: wrote " + counted(written.classes, "class", "classes");
  if (written.categories > 0) {
    text += " and " + counted(written.categories, "category", "categories");
  }
  printMessage(text + " to " + escapedForTerminal(folder) + "\n");
}

}  // namespace tavlen::cli
