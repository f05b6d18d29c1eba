#pragma once

#include <cstdint>

#include "tavlen/foundation/image/Image.h"

namespace tavlen {

/// Image::resized() for a size that is possible.
Image resizedImage(const Image& image, std::uint32_t width, std::uint32_t height);

}  // namespace tavlen
