#pragma once

#include <exception>
#include <string>

#include "tavlen/foundation/base/API.h"

namespace tavlen {

/// The base of every error of the library: an exception whose text is made on request.
///
/// Threads: `what()` caches the description in the object, so two threads must not call it on one
/// object at once.
class TAVLEN_API DescribedError : public std::exception {
 public:
  /// The whole text, in UTF-8. It contains values as they are: of any length, with any characters.
  virtual std::string description() const = 0;

  /// The description, which ends at its first NUL; valid until the next call or until the object is
  /// destroyed.
  const char* what() const noexcept final;

 private:
  mutable std::string what_;
};

}  // namespace tavlen
