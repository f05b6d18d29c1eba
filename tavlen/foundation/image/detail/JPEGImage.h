#pragma once

#include <optional>
#include <string_view>

#include "tavlen/foundation/image/Image.h"

/// The JPEG format (ISO/IEC 10918-1), over libjpeg-turbo. Threads: any.
namespace tavlen {

/// Whether `bytes` begin as a JPEG file does.
bool isJPEG(std::string_view bytes);
/// The picture in a file, turned as the orientation in its Exif data says; nothing for what is
/// damaged or too large. All coding processes of the library are read, and grey, RGB, YCbCr and the
/// two four-colour spaces.
std::optional<Image> decodeJPEG(std::string_view bytes);

}  // namespace tavlen
