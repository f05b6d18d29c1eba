#pragma once

#include <compare>
#include <string_view>

/// How names are sorted and searched: by the rules of the user's locale, ignoring case but not
/// accents.
///
/// Texts are UTF-8; what is malformed in one counts as U+FFFD. Composed and decomposed characters
/// are equal, and so are the texts that full case folding makes equal ("straße", "STRASSE"); in
/// Turkish and Azerbaijani the dotted and the dotless i differ, in Lithuanian a dot above an i does
/// not count. Threads: any; each keeps a collator of its own.
namespace tavlen {

/// The order of `left` and `right` in a sorted list. Punctuation and blanks count; digits compare
/// one by one.
std::weak_ordering localizedCaseInsensitiveCompare(std::string_view left, std::string_view right);

/// Whether `query` occurs in `text`, not ending within a character ("e" is not in "é"). False for
/// an empty query.
bool localizedCaseInsensitiveContains(std::string_view text, std::string_view query);

}  // namespace tavlen
