#pragma once

#include <exception>
#include <filesystem>
#include <string>
#include <string_view>

#include "cli/terminal/Console.h"
#include "tavlen/foundation/json/JSONEncoder.h"
#include "tavlen/foundation/text/EscapedText.h"

namespace tavlen::cli {

/// The message of an error in the words of the command, the same for each kind of error wherever
/// it occurs: a path and the system's text for failures of the file system, a sentence for a
/// program's end. Paths are plain ones, without "file://", and without the temporary folder in
/// which a file lay. A NUL is shown as "\x00".
std::string errorText(const std::exception& error);

/// `path` as it is shown: without the temporary folder in which the file lies.
std::string shownPath(const std::filesystem::path& path);

/// `message` as it is shown: on one line, escaped for the terminal, and without the middle if it is
/// overlong. A value in a message may be a whole document.
std::string shownLine(std::string_view message);

/// `value` as JSON on one line, escaped for the terminal. Throws EncodingError.
template <class T>
std::string shownJSON(const T& value) {
  return escapedJSON(encodeJSON(value));
}

/// Prints shownJSON() and a line break to the standard output. The text is never in memory as a
/// whole, and may have more values than a document; it has begun when a later part of it throws
/// EncodingError. Throws as printData() as well.
template <class T>
void printJSON(const T& value) {
  writeJSON(value, [](std::string_view piece) { printData(escapedJSON(std::string(piece))); });
  printData("\n");
}

}  // namespace tavlen::cli
