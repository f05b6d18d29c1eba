#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace tavlen {

/// Reads the little-endian number at `position`. `bytes` must hold all of it: the bounds are not
/// checked.
template <class Unsigned>
Unsigned littleEndian(std::string_view bytes, std::size_t position) {
  std::uint64_t value = 0;
  for (std::size_t i = sizeof(Unsigned); i > 0; --i) {
    value = value << 8 | static_cast<unsigned char>(bytes[position + i - 1]);
  }
  return static_cast<Unsigned>(value);
}

}  // namespace tavlen
