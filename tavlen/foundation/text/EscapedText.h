#pragma once

#include <string>
#include <string_view>

#include "tavlen/foundation/base/API.h"

namespace tavlen {

/// Whether an escape should stand for a UTF-16 code unit: control characters (C0, DEL and C1), and
/// the characters that break a line or change the direction of the text around them.
TAVLEN_API bool needsEscape(char16_t unit);

/// Appends the escape of `unit` in JSON and TOML, such as \u200e.
TAVLEN_API void appendUnicodeEscape(std::u16string& out, char16_t unit);

/// `text` on one line, safe for a terminal: control characters, line separators and characters that
/// change the direction of text become escapes, malformed UTF-8 becomes U+FFFD.
TAVLEN_API std::string escapedForTerminal(std::string_view text);

/// `json`, a JSON text in UTF-8, with those characters as escapes of JSON; from U+0000 to U+001F
/// they are escaped already. Slashes are not escaped.
TAVLEN_API std::string escapedJSON(std::string json);

}  // namespace tavlen
