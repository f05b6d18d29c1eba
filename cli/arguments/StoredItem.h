#pragma once

#include <filesystem>
#include <memory>
#include <optional>
#include <string>

#include "tavlen/store/BrokenItem.h"
#include "tavlen/store/OpenedItem.h"

namespace tavlen::cli {

/// The help text of an argument for a stored tweak or collection.
inline constexpr const char* kItemHelp =
    "The tweak or collection: its identifier, its name, or its path";
/// The help text of an argument for a stored tweak.
inline constexpr const char* kTweakHelp = "The tweak: its identifier, its name, or its path";

/// Whether `text` is a path rather than an identifier or a name: it contains a slash, or names a
/// tweak or a collection in the current folder.
bool isItemPath(const std::string& text);

/// Opens the item that `text` names. Tries in this order: a path (see isItemPath()), an identifier
/// in the store, the name of a stored item, which must be unique, and any other file in the current
/// folder. Throws std::runtime_error whose message begins with `text` or with the path of the
/// invalid document, and std::system_error, which names its file.
OpenedItem openedItem(const std::string& text);

/// As openedItem(), but also throws std::runtime_error for a collection.
TweakFile::Opened openedTweak(const std::string& text);

/// As openedTweak(), for commands that do not need the manifest.
std::shared_ptr<TweakFile> storedTweak(const std::string& text);

/// The broken item whose identifier is `text`, after openedItem() has failed; nothing if `text` is
/// something else.
std::optional<BrokenItem> brokenItem(const std::string& text);

/// The folder that contains the item that openedItem() would open for `text`, without links; the
/// store for a name, and for what does not exist. Opens no document.
std::filesystem::path folderOfItem(const std::string& text);

/// "tweak" or "collection".
std::string kindOf(const TweakProtocol& item);

/// Posts that `item` was created or deleted. The library leaves this to its callers.
void announce(TweakProtocol& item, GenericTweakDiffMode mode);

}  // namespace tavlen::cli
