#pragma once

#include <string_view>

#include "tools/loader/types/CallSignature.h"
#include "tools/loader/types/Ownership.h"

namespace tavlen::loader {

/// What a method does about references, by the rules for its name.
struct MethodFamily {
  /// Whether the caller owns the result: alloc, new, copy, mutableCopy and init.
  bool givesResult = false;
  /// Whether the result is not initialised yet: alloc.
  bool allocates = false;
  /// Whether it consumes a reference to its receiver: init.
  bool takesReceiver = false;
  /// Whether it counts references itself (retain, release, autorelease, retainCount) or ends the
  /// object (dealloc): a hook is only lent its receiver, and scripts do not send it.
  bool countsReferences = false;

  /// Of the method `selector` with these types.
  static MethodFamily of(std::string_view selector, bool isClassMethod,
                         const CallSignature& signature);

  Ownership ownershipOfResult() const {
    return givesResult ? Ownership::adopted : Ownership::borrowed;
  }
};

}  // namespace tavlen::loader
