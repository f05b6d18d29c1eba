#include "cli/tweaks/TextMessages.h"

namespace tavlen::cli {

void TextMessages::error(TextPosition position, const std::string& code, const std::string& text) {
  hasErrors_ = true;
  report_({.severity = Diagnostic::kError,
           .message = text,
           .file = file_,
           .line = position.line,
           .column = position.column,
           .code = code});
}

}  // namespace tavlen::cli
