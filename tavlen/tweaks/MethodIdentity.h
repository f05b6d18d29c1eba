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
  auto operator<=>(const MethodIdentity&) const = default;
};

}  // namespace tavlen
