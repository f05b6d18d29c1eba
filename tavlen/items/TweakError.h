#pragma once

#include <string>

#include "tavlen/foundation/base/API.h"
#include "tavlen/foundation/errors/CasedError.h"

namespace tavlen {

/// The cases of TweakError.
enum class TweakErrorCase { missing, bundleIDMismatch, notFound };

/// An error of a stored item that both kinds have in common.
class TAVLEN_API TweakError : public CasedError<TweakErrorCase> {
 public:
  /// A file is missing; `item` is its name.
  static TweakError missing(std::string item);
  /// The item targets another app: `found` instead of `expected`.
  static TweakError bundleIDMismatch(std::string expected, std::string found);
  /// No item exists at that place.
  static TweakError notFound();

 private:
  using CasedError::CasedError;
};

}  // namespace tavlen
