#include "cli/work/ErrorReport.h"

#include <string>
#include <string_view>

#include "cli/terminal/Console.h"
#include "cli/terminal/ShownText.h"
#include "tavlen/tweaks/TweakProcessor.h"

namespace tavlen::cli {

namespace {

void printCallStack(std::string_view stack) {
  while (!stack.empty()) {
    const std::size_t end = stack.find('\n');
    printMessage("    " + shownLine(stack.substr(0, end)) + "\n");
    stack.remove_prefix(end == std::string_view::npos ? stack.size() : end + 1);
  }
}

}  // namespace

void reportError(const std::exception& error) {
  const auto* failure = dynamic_cast<const TweakProcessor::Error*>(&error);
  if (failure == nullptr || failure->which() != TweakProcessor::Error::Case::jsException) {
    return printError(errorText(error));
  }
  printError("the transpiler failed: " + failure->reason());
  if (failure->stack()) printCallStack(*failure->stack());
}

}  // namespace tavlen::cli
