#pragma once

#include <optional>
#include <string_view>

#include "tavlen/foundation/image/Image.h"

/// The JPEG format (ISO/IEC 10918-1), over libjpeg-turbo. Threads: any.
namespace tavlen {

bool isJPEG(std::string_view bytes);
/// Nothing for what is damaged or too large. All coding processes of the library, grey, RGB, YCbCr
/// and the two four-colour spaces; an orientation that a camera noted is not applied.
std::optional<Image> decodeJPEG(std::string_view bytes);

}  // namespace tavlen
