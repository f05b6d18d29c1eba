#pragma once

#include <exception>
#include <stdexcept>
#include <string>

#include "cli/terminal/Diagnostic.h"

namespace tavlen::cli {

/// A failure at a place in a file, which reportError() prints. Its text begins with the place.
class PlacedError : public std::runtime_error {
 public:
  explicit PlacedError(Diagnostic diagnostic);

  /// The message.
  const Diagnostic& diagnostic() const { return diagnostic_; }

 private:
  Diagnostic diagnostic_;
};

/// The error of a file that cannot be used. Its message is that of `error`, without the file's
/// path. `code` is that of Diagnostic.
PlacedError fileError(const std::string& file, const std::exception& error, const char* code);

}  // namespace tavlen::cli
