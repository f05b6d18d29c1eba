#pragma once

#include <cstdint>
#include <string_view>

#include "tavlen/foundation/image/Image.h"

namespace tavlen {

/// How the rows and columns of a stored picture are to be shown: the values of the tag
/// "Orientation" (Exif 2.3, 4.6.4). Row 0 of the stored picture is at the top, and column 0 at the
/// left, of an upright one.
enum class EXIFOrientation : std::uint8_t {
  upright = 1,
  mirrored,         ///< column 0 is at the right
  upsideDown,       ///< row 0 is at the bottom, column 0 at the right
  flipped,          ///< row 0 is at the bottom
  transposed,       ///< row 0 is at the left, column 0 at the top
  turnedLeft,       ///< row 0 is at the right, column 0 at the top
  crossTransposed,  ///< row 0 is at the right, column 0 at the bottom
  turnedRight,      ///< row 0 is at the left, column 0 at the bottom
};

/// What the contents of an APP1 segment of a JPEG file say. Upright where the segment holds
/// something else, or is damaged. Threads: any.
EXIFOrientation exifOrientation(std::string_view segment);

/// `image`, stored so, as it is to be shown. Threads: any.
Image shownUpright(Image image, EXIFOrientation orientation);

}  // namespace tavlen
