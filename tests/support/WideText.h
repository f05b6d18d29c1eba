#pragma once

#include <string>
#include <string_view>

namespace tavlen {

/// The two bytes of each unit of `text`, or the four of each scalar.
template <class Unit>
std::string bytesOf(std::basic_string_view<Unit> text, bool bigEndian) {
  std::string out;
  for (const Unit unit : text) {
    for (std::size_t i = 0; i < sizeof(Unit); ++i) {
      const std::size_t shift = 8 * (bigEndian ? sizeof(Unit) - 1 - i : i);
      out += static_cast<char>((static_cast<char32_t>(unit) >> shift) & 0xFF);
    }
  }
  return out;
}

}  // namespace tavlen
