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

/// The identifiers of members that cannot be opened as tweaks.
std::vector<std::string> missingMembers(const TweakCollection::Manifest& manifest);

}  // namespace tavlen::cli
