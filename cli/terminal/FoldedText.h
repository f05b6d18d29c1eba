#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace tavlen::cli {

/// `text` in lines of at most `columns` columns, broken at blanks; a longer word has a line of its
/// own. Each line but the first begins with `indent` blanks; the first is expected to be printed at
/// that column. Ends in a line break.
std::string foldedText(std::string_view text, std::size_t indent, std::size_t columns);

}  // namespace tavlen::cli
