#pragma once

#include <string>
#include <string_view>

namespace tavlen::cli {

/// Writes `text` to the standard error stream, unchanged. Ignores errors.
void printMessage(std::string_view text);

/// Prints an error without a place, as print() of Diagnostic.h does: `tavlen: error: text`.
void printError(std::string_view text);
/// The same for a warning.
void printWarning(std::string_view text);
/// The same for what is neither: `tavlen: text`.
void printNote(std::string_view text);

/// Writes `data` to the standard output, unchanged. Throws std::system_error if that fails, for
/// example on a full disk.
void printData(std::string_view data);

/// The help text of `--force` for a command that writes a file.
inline constexpr const char* kForceHelp = "Replace an existing file";

/// Throws std::runtime_error if `file` exists, unless the user gave `--force`. "-" is the standard
/// output.
void requireFreeOutput(const std::string& file, bool force);

/// Writes `data` to `file`, or to the standard output if `file` is "-". Throws as
/// requireFreeOutput() does, and std::system_error.
void writeOutput(const std::string& file, bool force, std::string_view data);

/// The contents of `file`, which may be a pipe such as <(command), or of the standard input if
/// `file` is "-". At most 2 GiB. Throws std::system_error, and std::runtime_error if the standard
/// input was read before. Not thread-safe.
std::string readInput(const std::string& file);

/// What messages call an input: `file`, or "standard input" for "-".
std::string shownInput(const std::string& file);

}  // namespace tavlen::cli
