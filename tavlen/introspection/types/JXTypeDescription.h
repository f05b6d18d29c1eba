#pragma once

#include <string>

namespace tavlen {

/// The printed form of a type, in two parts for a declarator to stand between: a variable `x` of
/// the type is declared by head + `x` + tail. Four `int` have the head `int ` and the tail `[4]`.
struct JXTypeDescription {
  std::string head;
  std::string tail;

  bool operator==(const JXTypeDescription&) const = default;
};

}  // namespace tavlen
