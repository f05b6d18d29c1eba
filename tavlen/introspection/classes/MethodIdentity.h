#pragma once

#include <compare>
#include <cstddef>
#include <functional>
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

/// The method as people write it: "-[Class selector]", or "+[Class selector]" for a class method.
inline std::string methodText(const MethodIdentity& identity) {
  return (identity.isClassMethod ? "+[" : "-[") + identity.className + " " + identity.selector +
         "]";
}

}  // namespace tavlen

template <>
struct std::hash<tavlen::MethodIdentity> {
  std::size_t operator()(const tavlen::MethodIdentity& identity) const {
    constexpr std::size_t kFactor = 31;
    const std::hash<std::string> hashOf;
    return (hashOf(identity.className) * kFactor + hashOf(identity.selector)) * 2 +
           static_cast<std::size_t>(identity.isClassMethod);
  }
};
