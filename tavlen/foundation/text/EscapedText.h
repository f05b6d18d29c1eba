#pragma once

#include <string>
#include <string_view>

namespace tavlen {

/// `text` on one line, safe for a terminal: control characters become escapes, malformed UTF-8
/// becomes U+FFFD.
std::string escapedForTerminal(std::string_view text);

}  // namespace tavlen
