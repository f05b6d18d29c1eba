#pragma once

#include <string>
#include <string_view>

namespace tavlen::cli {

/// Writes `text` to the standard error stream as it is.
void printMessage(std::string_view text);

/// Writes `tavlen: error: text` to the standard error stream, as one line.
void printError(std::string_view text);
/// Writes `tavlen: warning: text` to the standard error stream, as one line.
void printWarning(std::string_view text);

/// Writes `data` to the standard output as it is. Throws std::system_error where that fails, as on
/// a full disk.
void printData(std::string_view data);

/// What the user gives in a file, or in the standard input where `file` is "-"; 2 GiB at the most.
/// Throws std::system_error.
std::string readInput(const std::string& file);

}  // namespace tavlen::cli
