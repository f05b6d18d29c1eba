#pragma once

#include <stdexcept>

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

}  // namespace tavlen::cli
