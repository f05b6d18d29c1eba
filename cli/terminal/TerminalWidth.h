#pragma once

#include <cstddef>

namespace tavlen::cli {

/// The columns of the terminal that the file descriptor `stream` writes to; 80 if it is no
/// terminal.
std::size_t terminalColumns(int stream);

/// The columns for text on the standard output: those that the variable COLUMNS names, or else
/// those of the terminal; at least 40.
std::size_t textColumns();

}  // namespace tavlen::cli
