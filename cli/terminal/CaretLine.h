#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace tavlen::cli {

/// Two lines for a terminal: `line`, indented, and under its `column` a caret.
///
/// `column` counts UTF-16 units from 1 and may lie behind the line's end. Tabs stay, and indent the
/// caret as well; control characters are written as escapes. Of a long line only the part around
/// the column is shown.
std::string caretLine(std::string_view line, std::size_t column);

}  // namespace tavlen::cli
