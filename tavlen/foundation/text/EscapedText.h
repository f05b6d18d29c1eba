#pragma once

#include <string>
#include <string_view>

namespace tavlen {

/// `text` on one line, safe for a terminal: control characters, line separators and characters that
/// change the direction of text become escapes, malformed UTF-8 becomes U+FFFD.
std::string escapedForTerminal(std::string_view text);

/// `json`, a JSON text in UTF-8, with those characters as escapes of JSON; from U+0000 to U+001F
/// they are escaped already.
std::string escapedJSON(std::string json);

}  // namespace tavlen
