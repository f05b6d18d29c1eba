#pragma once

#include <string>
#include <string_view>

/// Texts from elsewhere in C source. Threads: any.
namespace tavlen {

/// `text` as a comment on one line, which it cannot end.
std::string sourceComment(std::string_view text);

/// `text` as a literal in ASCII, byte for byte.
std::string sourceLiteral(std::string_view text);

}  // namespace tavlen
