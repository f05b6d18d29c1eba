#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

#include "tavlen/foundation/text/TextPosition.h"
#include "tavlen/foundation/toml/TOMLError.h"

namespace tavlen {

/// The most look-ups of tables that readTOML() accepts: each part of a dotted key before the last,
/// and each part of a header, is compared with the tables that such keys have made before. The TOML
/// library searches them one by one: measured without this limit, 0.14 MB of dotted keys took
/// 50 ms, and 2.7 MB, with five times as many look-ups as these, 4.5 s. A text of 20,000 hooks with
/// three such keys each, which took half a second, stays within the limit.
inline constexpr std::uint64_t kTOMLLookUps = std::uint64_t{1} << 31;

/// A string without closing quotes. The library says neither what it expects nor where it began.
struct UnclosedString {
  TextPosition begin;
  TOMLError error;  ///< at the end of its line, or of the text
};

/// Refuses TOML that would cost the TOML library more than linear time or a deep stack: too many
/// values, too many containers in one another (the library limits brackets, but not dotted keys,
/// and frees nested tables recursively), too many dotted keys. Also refuses characters that are
/// undefined behaviour of version 3.3 of the library: other ones than ASCII outside of strings and
/// comments, which are malformed anyway, and after a backslash at the end of a line.
///
/// Makes one linear pass over `text`, which is UTF-8. It only finds where strings, comments and
/// brackets begin and end, and stops where they are malformed; the library checks the syntax, and
/// stops there, too. Returns the string where it stopped, if it stopped at one. Throws TOMLError.
std::optional<UnclosedString> prescanTOML(std::string_view text);

}  // namespace tavlen
