#pragma once

#include <filesystem>
#include <memory>
#include <optional>
#include <string>

#include "cli/terminal/PlacedError.h"
#include "tavlen/foundation/coding/CodingError.h"
#include "tavlen/store/BrokenItem.h"
#include "tavlen/store/OpenedItem.h"

namespace tavlen::cli {

/// The help text of an argument for a stored tweak or collection.
inline constexpr const char* kItemHelp =
    "The tweak or collection: its identifier or the beginning of that, its name, or its path";
/// The help text of an argument for a stored tweak.
inline constexpr const char* kTweakHelp =
    "The tweak: its identifier or the beginning of that, its name, or its path";

/// The name of a tweak's text in a folder.
inline constexpr const char* kTextFile = "tweak.toml";
/// The name of a tweak's document in its folder.
inline constexpr const char* kDocumentFile = "Manifest.json";

/// Whether `text` is a path rather than an identifier or a name: it contains a slash, is "." or "-"
/// (the standard input), or ends in .toml, .json, .tvx or .tvxc.
bool isItemPath(const std::string& text);

/// What a path leads to.
enum class ItemForm {
  item,     ///< a tweak's folder, its document, or a collection's file
  text,     ///< the text of a tweak, a folder with one and no document, or the standard input
  archive,  ///< an archive, as written by `export`
};
/// What `path` leads to, by its name and by the files in it; `item` for what does not exist.
ItemForm formOf(const std::string& path);

/// The folder of the tweak at `path`: for a document, the folder that contains it; else `path`.
std::string itemFolder(const std::string& path);

/// The code of an error that keeps a tweak from being opened.
inline constexpr const char* kUnreadableTweakCode = "unreadable-tweak";
/// The error of `document`, the path of an item's document, with its place.
PlacedError documentError(const std::string& document, const DecodingError& error);

/// Opens the stored item, or the one outside the store, that `text` names: by its path, see
/// isItemPath(), or as TweakManager::find() does. Refuses texts and archives, which are no items
/// yet. Throws documentError(), fileError() of a document that cannot be read, std::runtime_error
/// whose message begins with `text`, ReportedError, and std::system_error, which names its file.
OpenedItem openedItem(const std::string& text);

/// As openedItem(), but also throws std::runtime_error for a collection.
TweakFile::Opened openedTweak(const std::string& text);

/// As openedTweak(), for commands that do not need the manifest.
std::shared_ptr<TweakFile> storedTweak(const std::string& text);

/// The broken item that `text` names by its identifier, after openedItem() has failed; nothing if
/// `text` is something else.
std::optional<BrokenItem> brokenItem(const std::string& text);

/// The folder that contains the item that openedItem() would open for `text`, without links; the
/// store for a name, and for what does not exist. Opens no document.
std::filesystem::path folderOfItem(const std::string& text);

/// "tweak" or "collection".
std::string kindOf(const TweakProtocol& item);

/// Posts that `item` was created or deleted. The library leaves this to its callers.
void announce(TweakProtocol& item, GenericTweakDiffMode mode);

}  // namespace tavlen::cli
