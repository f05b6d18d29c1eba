#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace tavlen::cli {

/// Two lines for a terminal: `line`, indented, and a caret under its `column`.
///
/// `column` counts UTF-16 units from 1 and may lie after the line's end. Tabs are kept, and
/// repeated in the indentation of the caret. Other control characters are escaped. Only the part of
/// a long line around the column is shown.
std::string caretLine(std::string_view line, std::size_t column);

}  // namespace tavlen::cli
