#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

namespace tavlen {

/// What a PNG file's IHDR chunk says about the picture (ISO/IEC 15948, 11.2.2). Threads: any.
struct PNGHeader {
  static constexpr std::size_t kSize = 13;  ///< of the chunk's contents, in bytes
  // Bits and values of `colorType`.
  static constexpr std::uint8_t kHasColor = 2;
  static constexpr std::uint8_t kHasAlpha = 4;
  static constexpr std::uint8_t kRGB = kHasColor;
  static constexpr std::uint8_t kIndexed = kHasColor | 1;
  static constexpr std::uint8_t kRGBA = kHasColor | kHasAlpha;

  std::uint32_t width = 0;  ///< in pixels, as is the height
  std::uint32_t height = 0;
  std::uint8_t bitDepth = 0;  ///< of a sample, or of an index into the palette
  std::uint8_t colorType = 0;
  bool isInterlaced = false;

  /// Reads the chunk's contents; returns nothing for values that the format does not know, and for
  /// a picture that is too large.
  static std::optional<PNGHeader> parse(std::string_view contents);

  /// The bytes of the picture before compression, with the filter byte that begins each row.
  std::uint64_t filteredSize() const;
};

}  // namespace tavlen
