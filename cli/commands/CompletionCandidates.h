#pragma once

#include <set>
#include <string>
#include <string_view>

#include "cli/help/CompletedWord.h"

namespace tavlen::cli {

/// Whether the placeholder is that of a side of a comparison: a tweak or a file.
bool isComparedKind(std::string_view kind);

/// The names of items, apps, hooks, classes and methods that `word` may become, as far as they can
/// be found without loading an image or ending an app. Sets the device root that the line gives.
/// Throws what reading them throws. No other thread may run.
std::set<std::string> completionCandidates(const CompletedWord& word);

}  // namespace tavlen::cli
