#pragma once

#include <cstdint>

#include "tavlen/foundation/image/Image.h"

namespace tavlen {

/// Does the work of Image::resized(), for a possible size. Threads: any.
Image resizedImage(const Image& image, std::uint32_t width, std::uint32_t height);

}  // namespace tavlen
