#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tavlen {

/// A picture of 8-bit RGBA pixels, row by row from the top, not premultiplied. Its scale is 1: a
/// point is a pixel. Threads: const calls may run side by side.
class Image {
 public:
  /// No side is longer, and no picture has more pixels: a header costs nothing to forge.
  static constexpr std::uint32_t kLongestSide = 16'384;
  static constexpr std::uint64_t kMostPixels = std::uint64_t{1} << 26;

  /// Whether a picture may have that size: no side is 0 or too long, and the pixels are not too
  /// many.
  static constexpr bool isPossibleSize(std::uint64_t width, std::uint64_t height) {
    return width > 0 && height > 0 && width <= kLongestSide && height <= kLongestSide &&
           width * height <= kMostPixels;
  }

  /// Reads PNG, the device's own "CgBI" form of it, and JPEG. Nothing for what is none of them, is
  /// damaged or is too large.
  static std::optional<Image> decode(std::string_view bytes);

  /// `pixels` are four bytes a pixel, exactly as many as the size asks for. A size that is not
  /// possible and a wrong number of bytes are programming errors, which stop the process.
  Image(std::uint32_t width, std::uint32_t height, std::vector<std::uint8_t> pixels);

  std::uint32_t width() const { return width_; }
  std::uint32_t height() const { return height_; }
  const std::vector<std::uint8_t>& pixels() const { return pixels_; }

  /// The picture as a PNG file, every pixel as it is.
  std::string pngData() const;

  /// The picture in that size; nothing for a size that is not possible. A side that shrinks is
  /// averaged over the area that each pixel covers, one that grows is interpolated linearly. What
  /// is transparent lends its colour to no neighbour.
  std::optional<Image> resized(std::uint32_t width, std::uint32_t height) const;

  bool operator==(const Image&) const = default;

 private:
  std::uint32_t width_;
  std::uint32_t height_;
  std::vector<std::uint8_t> pixels_;
};

}  // namespace tavlen
