#pragma once

#include <string>

namespace tavlen::cli {

/// Asks `question`, one or more lines of plain text, on the terminal. Returns whether the answer is
/// yes. Where the standard input or the standard error stream is no terminal, asks nothing, and the
/// answer is yes.
bool isConfirmed(const std::string& question);

}  // namespace tavlen::cli
