#pragma once

#include <functional>
#include <string>
#include <utility>

#include "cli/terminal/Diagnostic.h"
#include "tavlen/foundation/text/TextPosition.h"

namespace tavlen::cli {

/// Reports messages about places in a text, which are printed one a line, in the format of
/// compilers: "tweak.toml:12:9: error: unknown key".
class TextMessages {
 public:
  /// `file` is the text's path as the user wrote it. Messages are passed to `report`.
  TextMessages(std::string file, std::function<void(const Diagnostic&)> report)
      : file_(std::move(file)), report_(std::move(report)) {}

  /// Reports an error and remembers that there is one. `code` is that of Diagnostic.
  void error(TextPosition position, const std::string& code, const std::string& text);
  /// Whether an error was reported.
  bool hasErrors() const { return hasErrors_; }

 private:
  std::string file_;
  std::function<void(const Diagnostic&)> report_;
  bool hasErrors_ = false;
};

}  // namespace tavlen::cli
