#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace tavlen {

/// The standard alphabet (RFC 4648, section 4), padded, on one line.
std::string base64FromBytes(std::string_view bytes);

enum class Base64Blanks { refused, skipped };

/// The bytes of `text`, whose padding must be complete; nothing for any other text. Spaces, tabs
/// and line ends may stand anywhere when `blanks` says so.
std::optional<std::string> bytesFromBase64(std::string_view text,
                                           Base64Blanks blanks = Base64Blanks::refused);

}  // namespace tavlen
