#pragma once

#include <string>

namespace tavlen {

/// The C declaration of a type in two parts, before and after the declarator: a variable `x` is
/// declared by head + `x` + tail. For an array of four `int`, the head is `int ` and the tail
/// `[4]`.
struct JXTypeDescription {
  /// The part before the declarator.
  std::string head;
  /// The part after the declarator.
  std::string tail;

  bool operator==(const JXTypeDescription&) const = default;
};

}  // namespace tavlen
