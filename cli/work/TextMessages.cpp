#include "cli/work/TextMessages.h"

#include "cli/terminal/Console.h"
#include "cli/terminal/ShownText.h"

namespace tavlen::cli {

void TextMessages::print(TextPosition position, const char* kind, const std::string& text) const {
  printMessage(shownLine(file_ + ":" + description(position) + ": " + kind + ": " + text) + "\n");
}

void TextMessages::error(TextPosition position, const std::string& text) {
  hasErrors_ = true;
  print(position, "error", text);
}

void TextMessages::warning(TextPosition position, const std::string& text) {
  print(position, "warning", text);
}

}  // namespace tavlen::cli
