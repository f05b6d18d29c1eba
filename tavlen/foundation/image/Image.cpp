#include "tavlen/foundation/image/Image.h"

#include <utility>

#include "tavlen/foundation/base/FatalError.h"
#include "tavlen/foundation/image/detail/ImageResizing.h"
#include "tavlen/foundation/image/detail/JPEGImage.h"
#include "tavlen/foundation/image/detail/PNGImage.h"

namespace tavlen {

std::optional<Image> Image::decode(std::string_view bytes) {
  if (isPNG(bytes)) return decodePNG(bytes);
  if (isJPEG(bytes)) return decodeJPEG(bytes);
  return std::nullopt;
}

Image::Image(std::uint32_t width, std::uint32_t height, std::vector<std::uint8_t> pixels)
    : width_(width), height_(height), pixels_(std::move(pixels)) {
  if (!isPossibleSize(width, height) || pixels_.size() != std::size_t{width} * height * 4) {
    fatalError("an image's pixels do not fit its size");
  }
}

std::string Image::pngData() const { return encodePNG(*this); }

std::optional<Image> Image::resized(std::uint32_t width, std::uint32_t height) const {
  if (!isPossibleSize(width, height)) return std::nullopt;
  return resizedImage(*this, width, height);
}

}  // namespace tavlen
