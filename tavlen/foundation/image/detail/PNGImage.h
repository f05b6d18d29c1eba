#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "tavlen/foundation/image/Image.h"

/// The PNG format (ISO/IEC 15948), over libpng, and the device's own form of it. Threads: any.
///
/// In the form that the device's build tools make of an app's pictures a chunk "CgBI" comes first,
/// the compressed data has neither the header nor the checksum of zlib, and colours are stored as
/// blue, green, red and multiplied by their alpha. Nothing documents it; these are the differences
/// that such files show.
namespace tavlen {

/// Whether `bytes` begin as a file of either form does.
bool isPNG(std::string_view bytes);

/// The picture in a file of either form; nothing for what is damaged or too large. Samples of 16
/// bits are rounded to 8; a gamma value in the file is honoured, a colour profile is not.
///
/// No more is inflated than the rows need, however much compressed data follows them. All chunks
/// must be whole, up to the one that ends the file.
std::optional<Image> decodePNG(std::string_view bytes);

/// `image` as a file of the ordinary form. Throws std::bad_alloc.
std::string encodePNG(const Image& image);

}  // namespace tavlen
