#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "tavlen/foundation/base/API.h"
#include "tavlen/foundation/base/Limits.h"

namespace tavlen {

/// A picture of 8-bit RGBA pixels, row by row from the top, not premultiplied. Its scale is 1: a
/// point is a pixel. Threads: const calls may run concurrently.
class TAVLEN_API Image {
 public:
  /// The limits of a picture, in pixels: its header alone could ask for any amount of memory.
  static constexpr std::uint32_t kLongestSide = limits::kImageSide;
  static constexpr std::uint64_t kMostPixels = limits::kImagePixels;

  /// Whether a picture may have that size: no side is 0 or exceeds the limit, nor does the number
  /// of pixels.
  static constexpr bool isPossibleSize(std::uint64_t width, std::uint64_t height) {
    return width > 0 && height > 0 && width <= kLongestSide && height <= kLongestSide &&
           width * height <= kMostPixels;
  }

  /// Reads PNG, the device's own "CgBI" form of it, and JPEG, which is turned as its Exif data
  /// says. Returns nothing for bytes of another format, a damaged file, or a picture that is too
  /// large.
  static std::optional<Image> decode(std::string_view bytes);

  /// `pixels` has four bytes for each pixel of the size. An impossible size and a wrong number of
  /// bytes are programming errors, which stop the process.
  Image(std::uint32_t width, std::uint32_t height, std::vector<std::uint8_t> pixels);

  /// In pixels, as is the height.
  std::uint32_t width() const { return width_; }
  std::uint32_t height() const { return height_; }
  /// Red, green, blue and alpha of each pixel; valid as long as the image.
  const std::vector<std::uint8_t>& pixels() const { return pixels_; }

  /// The picture as a PNG file, every pixel as it is. Throws std::bad_alloc.
  std::string pngData() const;

  /// The picture in that size, in pixels; nothing for an impossible size. A side that shrinks is
  /// averaged over the area that each pixel covers, a side that grows is interpolated linearly. The
  /// colour of a transparent pixel does not spread to its neighbours.
  std::optional<Image> resized(std::uint32_t width, std::uint32_t height) const;

  bool operator==(const Image&) const = default;

 private:
  std::uint32_t width_;
  std::uint32_t height_;
  std::vector<std::uint8_t> pixels_;
};

}  // namespace tavlen
