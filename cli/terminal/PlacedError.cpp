#include "cli/terminal/PlacedError.h"

#include <utility>

#include "cli/terminal/ShownText.h"

namespace tavlen::cli {

PlacedError::PlacedError(Diagnostic diagnostic)
    : std::runtime_error(placeText(diagnostic) + ": " + diagnostic.message),
      diagnostic_(std::move(diagnostic)) {}

PlacedError fileError(const std::string& file, const std::exception& error, const char* code) {
  std::string message = errorText(error);
  if (message.starts_with(file + ": ")) message.erase(0, file.size() + 2);
  return PlacedError(
      {.severity = Diagnostic::kError, .message = std::move(message), .file = file, .code = code});
}

}  // namespace tavlen::cli
