#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "tavlen/foundation/base/API.h"

namespace tavlen {

/// Encodes `bytes` in the standard alphabet (RFC 4648, section 4), padded, without line breaks.
TAVLEN_API std::string base64FromBytes(std::string_view bytes);

/// Whether a decoder accepts spaces, tabs and line ends, anywhere in the text.
enum class Base64Blanks { refused, skipped };

/// Decodes `text`, whose padding must be complete. Returns nothing for malformed text, which
/// includes blanks unless `blanks` is `skipped`.
TAVLEN_API std::optional<std::string> bytesFromBase64(std::string_view text,
                                                      Base64Blanks blanks = Base64Blanks::refused);

/// The number from 0 to 63 that `digit` stands for; nothing for any other character.
TAVLEN_API std::optional<std::uint8_t> valueOfBase64Digit(char digit);

}  // namespace tavlen
