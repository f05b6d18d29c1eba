#pragma once

#include <cstddef>
#include <string_view>

namespace tavlen::cli {

/// The width of `text`, UTF-8 without control characters, in terminal columns. Wide characters take
/// two columns, combining ones none, and joined emoji as many as one.
std::size_t displayWidth(std::string_view text);

}  // namespace tavlen::cli
