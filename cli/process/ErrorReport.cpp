#include "cli/process/ErrorReport.h"

#include <string>
#include <string_view>

#include "cli/terminal/Console.h"
#include "cli/terminal/Diagnostic.h"
#include "cli/terminal/PlacedError.h"
#include "cli/terminal/ReportedError.h"
#include "cli/terminal/ShownText.h"
#include "tavlen/tweaks/TweakProcessor.h"

namespace tavlen::cli {

namespace {

/// A call stack, to be shown after the message.
std::string indented(std::string_view stack) {
  std::string lines;
  while (!stack.empty()) {
    const std::size_t end = stack.find('\n');
    lines += "    " + shownLine(stack.substr(0, end)) + "\n";
    stack.remove_prefix(end == std::string_view::npos ? stack.size() : end + 1);
  }
  return lines;
}

}  // namespace

void reportError(const std::exception& error) {
  if (dynamic_cast<const ReportedError*>(&error) != nullptr) return;
  if (const auto* placed = dynamic_cast<const PlacedError*>(&error))
    return print(placed->diagnostic());
  const auto* failure = dynamic_cast<const TweakProcessor::Error*>(&error);
  if (failure == nullptr || failure->which() != TweakProcessor::Error::Case::jsException) {
    return printError(errorText(error));
  }
  print({.severity = Diagnostic::kError,
         .message = "the transpiler failed: " + failure->reason(),
         .code = "transpiler-failed",
         .excerpt = failure->stack() ? indented(*failure->stack()) : ""});
}

}  // namespace tavlen::cli
