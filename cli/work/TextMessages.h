#pragma once

#include <string>
#include <utility>

#include "tavlen/foundation/text/TextPosition.h"

namespace tavlen::cli {

/// Prints messages about places in a text, one a line, in the format of compilers:
/// "tweak.toml:12:9: error: unknown key".
class TextMessages {
 public:
  /// `file` is the text's path as the user wrote it.
  explicit TextMessages(std::string file) : file_(std::move(file)) {}

  /// Prints an error and remembers that there is one.
  void error(TextPosition position, const std::string& text);
  /// Prints a warning.
  void warning(TextPosition position, const std::string& text);
  /// Whether an error was printed.
  bool hasErrors() const { return hasErrors_; }

 private:
  void print(TextPosition position, const char* kind, const std::string& text) const;

  std::string file_;
  bool hasErrors_ = false;
};

}  // namespace tavlen::cli
