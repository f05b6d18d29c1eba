#pragma once

#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "tavlen/foundation/base/API.h"

/// "Did you mean": the name that was probably meant. Threads: any.
namespace tavlen {

/// The name among `known` that needs the fewest corrections to become `name`, at most three and at
/// most a third of its letters. A correction inserts, removes or replaces a letter, or swaps two
/// neighbours. Of equally close names the first is chosen. Returns nothing if none is close enough.
/// Work is linear in the number of names.
TAVLEN_API std::optional<std::string_view> closestName(std::string_view name,
                                                       std::span<const std::string_view> known);

/// "; did you mean "color"?" with that name. If none is close enough, a short list of all names:
/// "; known are color, name".
TAVLEN_API std::string suggestionText(std::string_view name,
                                      std::span<const std::string_view> known);

}  // namespace tavlen
