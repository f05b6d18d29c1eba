#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tavlen {

/// A picture of 8-bit RGBA pixels, row by row from the top, not premultiplied. Its scale is 1: a
/// point is a pixel.
class Image {
 public:
  /// No side is longer, and no picture has more pixels: a header costs nothing to forge.
  static constexpr std::uint32_t kLongestSide = 16'384;
  static constexpr std::uint64_t kMostPixels = std::uint64_t{1} << 26;

  /// Reads PNG, the device's own "CgBI" form of it, and JPEG. Nothing for what is none of them, is
  /// damaged or is too large.
  static std::optional<Image> decode(std::string_view bytes);

  /// `pixels` are four bytes a pixel.
  Image(std::uint32_t width, std::uint32_t height, std::vector<std::uint8_t> pixels);

  std::uint32_t width() const { return width_; }
  std::uint32_t height() const { return height_; }
  const std::vector<std::uint8_t>& pixels() const { return pixels_; }

  std::string pngData() const;
  /// The picture in that size, each pixel the mean of what it covers; nothing for a size of 0 or
  /// one that is too large.
  std::optional<Image> resized(std::uint32_t width, std::uint32_t height) const;

  bool operator==(const Image&) const = default;

 private:
  std::uint32_t width_;
  std::uint32_t height_;
  std::vector<std::uint8_t> pixels_;
};

}  // namespace tavlen
