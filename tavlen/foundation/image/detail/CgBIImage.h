#pragma once

#include <optional>
#include <string_view>

#include "tavlen/foundation/image/Image.h"

/// The form of PNG that the device's build tools make of an app's pictures: a chunk "CgBI" comes
/// first, the compressed data have neither the header nor the checksum of zlib, colours stand as
/// blue, green, red and are multiplied by their alpha. Nothing documents it; these are the
/// differences that such files show. Threads: any.
namespace tavlen {

bool isCgBI(std::string_view bytes);
/// Nothing for what is damaged or too large.
std::optional<Image> decodeCgBI(std::string_view bytes);

}  // namespace tavlen
