#pragma once

#include <string>
#include <string_view>

namespace tavlen {

/// `text` on one line, safe for a terminal: control characters are written as escapes, what is not
/// UTF-8 as U+FFFD.
std::string escapedForTerminal(std::string_view text);

}  // namespace tavlen
