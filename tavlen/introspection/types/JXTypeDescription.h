#pragma once

#include <string>

#include "tavlen/foundation/base/API.h"

namespace tavlen {

/// The C declaration of a type in two parts, before and after the declarator: a variable `x` is
/// declared by head + `x` + tail. For an array of four `int`, the head is `int ` and the tail
/// `[4]`.
struct TAVLEN_API JXTypeDescription {
  /// The part before the declarator.
  std::string head;
  /// The part after the declarator.
  std::string tail;

  bool operator==(const JXTypeDescription&) const = default;
};

/// The structs and unions that a declaration shows with their members.
enum class JXTypeBodies {
  all,      ///< every one that has a body
  unnamed,  ///< those without a name; one that has a name by that alone: `struct CGRect`
};

}  // namespace tavlen
