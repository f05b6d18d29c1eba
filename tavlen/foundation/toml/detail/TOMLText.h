#pragma once

#include <string>
#include <string_view>

/// The texts of TOML. Characters that needsEscape() names are escaped. Errors: EncodingError for
/// text that is not UTF-8, with nothing appended.
namespace tavlen {

/// Appends a string on one line, in single quotes where that saves escapes.
void appendTOMLString(std::string& out, std::string_view text);

/// Appends a string in which each line of the text is a line.
void appendTOMLLines(std::string& out, std::string_view text);

/// Appends a key, with quotes only if it needs them.
void appendTOMLKey(std::string& out, std::string_view key);

}  // namespace tavlen
