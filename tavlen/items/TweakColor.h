#pragma once

#include <array>
#include <cstddef>
#include <string_view>

#include "tavlen/foundation/base/API.h"
#include "tavlen/foundation/coding/RawValueCoding.h"

namespace tavlen {

/// The tint of a tweak or a collection. The library's users map it to an actual colour. The list is
/// complete: no dark blue or dark pink exists.
enum class TweakColor {
  lightGreen,
  darkGreen,
  lightBlue,
  lightYellow,
  darkYellow,
  lightRed,
  darkRed,
  lightPurple,
  darkPurple,
  lightPink,
};

template <>
struct RawValues<TweakColor> {
  /// The stored names, in the order of the enumerators.
  static constexpr std::array<std::string_view, 10> names = {
      "lightGreen", "darkGreen", "lightBlue",   "lightYellow", "darkYellow",
      "lightRed",   "darkRed",   "lightPurple", "darkPurple",  "lightPink",
  };
  static constexpr std::string_view typeName = "color";
};

/// The index of `color` in the enumeration; 0 for a value that is not an enumerator.
TAVLEN_API std::size_t index(TweakColor color);

}  // namespace tavlen
