#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "tavlen/foundation/image/Image.h"
#include "tavlen/foundation/image/detail/PNGHeader.h"

/// The PNG format (ISO/IEC 15948), over libpng. Threads: any.
namespace tavlen {

bool isPNG(std::string_view bytes);
/// Nothing for what is damaged or too large.
std::optional<Image> decodePNG(std::string_view bytes);
/// The RGBA pixels of a file whose IHDR chunk says `header`; empty for what is damaged.
std::vector<std::uint8_t> readPNGPixels(std::string_view bytes, const PNGHeader& header);
std::string encodePNG(const Image& image);

}  // namespace tavlen
