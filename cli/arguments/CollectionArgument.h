#pragma once

#include <memory>
#include <string>
#include <vector>

#include "tavlen/collections/TweakCollectionManifest.h"

namespace tavlen::cli {

/// What commands say of an argument that names a stored collection.
inline constexpr const char* kCollectionHelp =
    "The collection: its identifier, its name, or its path";

/// As openedItem(), for a collection. Throws for a tweak, too.
TweakCollection::Opened openedCollection(const std::string& text);

/// The identifiers in the collection that name no tweak that can be opened.
std::vector<std::string> missingMembers(const TweakCollection::Manifest& manifest);

}  // namespace tavlen::cli
