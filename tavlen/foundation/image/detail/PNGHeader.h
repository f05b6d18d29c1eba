#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

namespace tavlen {

/// What a PNG file's IHDR chunk says of the picture (ISO/IEC 15948, 11.2.2).
struct PNGHeader {
  static constexpr std::size_t kSize = 13;
  static constexpr std::uint8_t kHasColor = 2;
  static constexpr std::uint8_t kHasAlpha = 4;
  static constexpr std::uint8_t kRGB = kHasColor;
  static constexpr std::uint8_t kIndexed = kHasColor | 1;
  static constexpr std::uint8_t kRGBA = kHasColor | kHasAlpha;

  std::uint32_t width = 0;
  std::uint32_t height = 0;
  std::uint8_t bitDepth = 0;
  std::uint8_t colorType = 0;
  bool isInterlaced = false;

  /// The chunk's contents; nothing for values that the format does not know, and for a picture that
  /// is too large.
  static std::optional<PNGHeader> parse(std::string_view contents);

  /// How many bytes the picture has before compression, with the filter byte that begins each row.
  std::uint64_t filteredSize() const;
};

}  // namespace tavlen
