#pragma once

#include <array>
#include <cstddef>
#include <string_view>

#include "tavlen/foundation/coding/RawValueCoding.h"

namespace tavlen {

/// The tint of a tweak or a collection; users of the library map it to a colour of the screen. The
/// list is complete as it stands, without a dark blue and a dark pink.
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
  static constexpr std::array<std::string_view, 10> names = {
      "lightGreen", "darkGreen", "lightBlue",   "lightYellow", "darkYellow",
      "lightRed",   "darkRed",   "lightPurple", "darkPurple",  "lightPink",
  };
  static constexpr std::string_view typeName = "color";
};

/// The place of `color` among all colours; 0 for a value that is none of them.
std::size_t index(TweakColor color);

}  // namespace tavlen
