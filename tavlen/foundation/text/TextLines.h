#pragma once

#include <cstddef>
#include <optional>
#include <string_view>

#include "tavlen/foundation/base/API.h"
#include "tavlen/foundation/text/TextPosition.h"

namespace tavlen {

// The lines of scripts. As in JavaScript, a line ends in LF, CR, CRLF, U+2028 or U+2029, and
// columns are UTF-16 units.

/// The UTF-16 units of the UTF-8 character that begins with `byte`; 0 for its other bytes.
TAVLEN_API std::size_t utf16UnitsOf(char byte);

/// The number of line ends in `text`.
TAVLEN_API std::size_t lineEndCount(std::string_view text);

/// The line `number` of `text`, which counts from 1, without its end. Empty if there is no such
/// line.
TAVLEN_API std::string_view lineAt(std::string_view text, std::size_t number);

/// The byte of `text`, which is UTF-8, at `position`. The place after the last character of a line
/// belongs to it. Returns nothing for a place outside of the text.
TAVLEN_API std::optional<std::size_t> offsetAt(std::string_view text, TextPosition position);

/// The position of the byte at `offset` in `text`, which is UTF-8: the inverse of offsetAt().
TAVLEN_API TextPosition linePositionAt(std::string_view text, std::size_t offset);

}  // namespace tavlen
