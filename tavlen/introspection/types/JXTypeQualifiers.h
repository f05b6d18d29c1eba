#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace tavlen {

/// What an encoding may say of a type before the type's own characters. A set of bits.
enum class JXTypeQualifiers : std::uint64_t {
  none = 0,
  volatile_ = 1,
  const_ = 2,
  in = 4,
  inout = 8,
  out = 16,
  bycopy = 32,
  byref = 64,
  oneway = 128,
  atomic = 256,
};

constexpr JXTypeQualifiers operator|(JXTypeQualifiers left, JXTypeQualifiers right) {
  return JXTypeQualifiers{static_cast<std::uint64_t>(left) | static_cast<std::uint64_t>(right)};
}
constexpr JXTypeQualifiers operator&(JXTypeQualifiers left, JXTypeQualifiers right) {
  return JXTypeQualifiers{static_cast<std::uint64_t>(left) & static_cast<std::uint64_t>(right)};
}

/// The qualifier that `character` stands for; none for every character that is no qualifier.
JXTypeQualifiers JXTypeQualifierForEncoding(char character);

/// The words of `qualifiers` in the order of their bits, one blank between them (`const oneway`);
/// nothing for the empty set. Bits without a word are passed over.
std::optional<std::string> JXStringForTypeQualifiers(JXTypeQualifiers qualifiers);

}  // namespace tavlen
