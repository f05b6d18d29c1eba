#pragma once

#include <memory>
#include <string>
#include <vector>

#include "tavlen/collections/TweakCollectionManifest.h"

namespace tavlen::cli {

/// The help text of an argument for a stored collection.
inline constexpr const char* kCollectionHelp =
    "The collection: its identifier, its name, or its path";

/// As openedItem(), but also throws std::runtime_error for a tweak.
TweakCollection::Opened openedCollection(const std::string& text);

/// The identifiers of members that are not among `opened`, the tweaks that could be opened.
std::vector<std::string> missingMembers(const TweakCollection::Manifest& manifest,
                                        const std::vector<TweakFile::Opened>& opened);

}  // namespace tavlen::cli
