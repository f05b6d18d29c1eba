#pragma once

#include <compare>
#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include "tavlen/foundation/base/API.h"

namespace tavlen {

/// The identity of a method, and so of a hook within a tweak. A plain value.
struct TAVLEN_API MethodIdentity {
  /// The class that defines the method.
  std::string className;
  /// The selector, with its colons.
  std::string selector;
  /// Whether it is a class method, not an instance method.
  bool isClassMethod = false;

  bool operator==(const MethodIdentity&) const = default;
  // NOLINTNEXTLINE(modernize-use-nullptr): the check takes the comparison's zero for a pointer.
  auto operator<=>(const MethodIdentity&) const = default;
};

/// The method as a text: "-[Class selector]", or "+[Class selector]" for a class method.
inline std::string methodText(const MethodIdentity& identity) {
  return (identity.isClassMethod ? "+[" : "-[") + identity.className + " " + identity.selector +
         "]";
}

/// Reads a method as methodText() writes it. The names of classes may contain blanks, as those of
/// generic Swift classes do; selectors never do. Returns nothing for any other text.
TAVLEN_API std::optional<MethodIdentity> methodNamed(std::string_view text);

}  // namespace tavlen

/// Hash for unordered containers.
template <>
struct std::hash<tavlen::MethodIdentity> {
  /// Combines the hashes of all members.
  std::size_t operator()(const tavlen::MethodIdentity& identity) const {
    constexpr std::size_t kFactor = 31;
    const std::hash<std::string> hashOf;
    return (hashOf(identity.className) * kFactor + hashOf(identity.selector)) * 2 +
           static_cast<std::size_t>(identity.isClassMethod);
  }
};
