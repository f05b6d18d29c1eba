#pragma once

#include <map>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "cli/help/CommandRecord.h"

namespace tavlen::cli {

/// The last word of a line that the user is writing, and what may stand there.
///
/// The placeholders of arguments say what they are: TWEAK, COLLECTION or ITEM, APP, IMAGE, HOOK,
/// METHOD, CLASS, KIND, GLYPH, FILE, DIR, or BEFORE and AFTER, a tweak or a file each; words in
/// small letters are themselves; several kinds are separated by "|".
struct CompletedWord {
  std::string start;                ///< "--output=": stands before every candidate
  std::string prefix;               ///< what has been written of the value
  std::vector<std::string> values;  ///< candidates that are known: commands, options, values
  std::vector<std::string> kinds;   ///< placeholders of other candidates
  /// The arguments before, by their placeholders, and the values of options, by their long names.
  std::map<std::string, std::string, std::less<>> given;

  /// `words` begin with the name of the command `root`. There must be at least two.
  static CompletedWord of(const CommandRecord& root, std::span<const std::string> words);

  bool hasKind(std::string_view kind) const;
};

}  // namespace tavlen::cli
