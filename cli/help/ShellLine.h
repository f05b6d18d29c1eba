#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace tavlen::cli {

/// The beginning of a line for a shell, as far as completion needs it.
struct ShellLine {
  std::vector<std::string>
      words;       ///< without quotes; the last one is being written, and may be empty
  char quote = 0;  ///< the quote that is open: ', " or 0
  /// The part of the last word, without quotes, that the shell's editor does not replace: it
  /// begins its own words after these characters.
  std::size_t kept = 0;

  /// Reads `line` up to the cursor.
  static ShellLine read(std::string_view line);

  /// The text that completes the last word to `word`: without the part that is kept, quoted.
  std::string completion(std::string_view word) const;
};

}  // namespace tavlen::cli
