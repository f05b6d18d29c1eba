#pragma once

#include <compare>
#include <string>
#include <string_view>

#include "tavlen/foundation/base/API.h"

/// Sorting and searching of names by the rules of the user's locale, ignoring case but not accents.
///
/// Texts are UTF-8; malformed sequences count as U+FFFD. Composed and decomposed characters are
/// equal, and so are texts that full case folding makes equal ("straße", "STRASSE"). In Turkish and
/// Azerbaijani, dotted and dotless i differ; in Lithuanian, a dot above an i is ignored. Threads:
/// any; each thread keeps its own collator.
namespace tavlen {

/// The order of `left` and `right` in a sorted list. Punctuation and blanks count; digits compare
/// one by one.
TAVLEN_API std::weak_ordering localizedCaseInsensitiveCompare(std::string_view left,
                                                              std::string_view right);

/// Bytes whose order is the one of localizedCaseInsensitiveCompare(), for sorting many texts: each
/// is then converted once. To be compared with keys of the same locale.
TAVLEN_API std::string localizedCaseInsensitiveKey(std::string_view text);

/// Whether `query` occurs in `text`, ending at the end of a character ("e" is not in "é"). False
/// for an empty query.
TAVLEN_API bool localizedCaseInsensitiveContains(std::string_view text, std::string_view query);

}  // namespace tavlen
