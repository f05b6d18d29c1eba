#pragma once

#include <string>

#include "tavlen/foundation/errors/CasedError.h"

namespace tavlen {

enum class TweakErrorCase { missing, bundleIDMismatch, notFound };

/// What is wrong with a stored tweak or collection, whatever its kind.
class TweakError : public CasedError<TweakErrorCase> {
 public:
  /// `item` is the name of what is missing.
  static TweakError missing(std::string item);
  static TweakError bundleIDMismatch(std::string expected, std::string found);
  static TweakError notFound();

 private:
  using CasedError::CasedError;
};

}  // namespace tavlen
