#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace tavlen::cli {

/// "1 class" or "3,120 classes".
std::string countText(std::size_t count, std::string_view one, std::string_view several);

/// Writes `counts` as a line to the standard error stream if that is a terminal.
void printCounts(std::string_view counts);

}  // namespace tavlen::cli
