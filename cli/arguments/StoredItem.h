#pragma once

#include <memory>
#include <string>

#include "tavlen/store/OpenedItem.h"

namespace tavlen::cli {

/// What commands say of an argument that names a stored tweak or collection.
inline constexpr const char* kItemHelp =
    "The tweak or collection: its identifier, its name, or its path";
/// The same where it must be a tweak.
inline constexpr const char* kTweakHelp = "The tweak: its identifier, its name, or its path";

/// Whether a user names an item by a path: `text` holds a slash, or names a tweak or a collection
/// here.
bool isItemPath(const std::string& text);

/// The item that a user names: by a path, as isItemPath() tells, or else by its identifier in the
/// store, or by its name, which must then be the only one, or by what else lies here. Throws
/// std::runtime_error whose text begins with `text`, or with the path of the document at fault;
/// std::system_error, which names its file, passes through.
OpenedItem openedItem(const std::string& text);

/// As openedItem(), for a tweak. Throws for a collection, too.
TweakFile::Opened openedTweak(const std::string& text);

/// As openedTweak(), for commands that do not ask for the manifest.
std::shared_ptr<TweakFile> storedTweak(const std::string& text);

/// "tweak" or "collection".
std::string kindOf(const TweakProtocol& item);

/// Posts that `item` was created or deleted, which the library leaves to who adds it to what is
/// shown.
void announce(TweakProtocol& item, GenericTweakDiffMode mode);

}  // namespace tavlen::cli
