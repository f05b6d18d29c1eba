#pragma once

#include <compare>
#include <string>

namespace tavlen {

/// What tells one method from another, and so one hook of a tweak from another.
struct MethodIdentity {
  std::string className;
  std::string selector;
  bool isClassMethod = false;

  bool operator==(const MethodIdentity&) const = default;
  // NOLINTNEXTLINE(modernize-use-nullptr): the check takes the comparison's zero for a pointer.
  auto operator<=>(const MethodIdentity&) const = default;
};

}  // namespace tavlen
