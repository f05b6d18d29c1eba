#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "tavlen/foundation/base/API.h"

namespace tavlen {

/// The qualifiers before a type's own characters. A set of bits.
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

/// The union of two sets.
constexpr JXTypeQualifiers operator|(JXTypeQualifiers left, JXTypeQualifiers right) {
  return JXTypeQualifiers{static_cast<std::uint64_t>(left) | static_cast<std::uint64_t>(right)};
}
/// The intersection of two sets.
constexpr JXTypeQualifiers operator&(JXTypeQualifiers left, JXTypeQualifiers right) {
  return JXTypeQualifiers{static_cast<std::uint64_t>(left) & static_cast<std::uint64_t>(right)};
}

/// The qualifier that `character` encodes; `none` for all other characters.
TAVLEN_API JXTypeQualifiers JXTypeQualifierForEncoding(char character);

/// The keywords of `qualifiers` in the order of their bits, separated by blanks (`const oneway`);
/// nothing for the empty set. Unknown bits are ignored.
TAVLEN_API std::optional<std::string> JXStringForTypeQualifiers(JXTypeQualifiers qualifiers);

}  // namespace tavlen
