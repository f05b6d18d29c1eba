#include "cli/work/TextMessages.h"

#include "cli/terminal/Diagnostic.h"

namespace tavlen::cli {

void TextMessages::print(TextPosition position, const char* kind, const std::string& text) const {
  cli::print({.severity = kind,
              .message = text,
              .file = file_,
              .line = position.line,
              .column = position.column});
}

void TextMessages::error(TextPosition position, const std::string& text) {
  hasErrors_ = true;
  print(position, Diagnostic::kError, text);
}

void TextMessages::warning(TextPosition position, const std::string& text) {
  print(position, Diagnostic::kWarning, text);
}

}  // namespace tavlen::cli
