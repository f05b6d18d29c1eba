#include "cli/arguments/StoredItem.h"

#include <filesystem>
#include <optional>
#include <stdexcept>
#include <system_error>
#include <vector>

#include "cli/terminal/ShownText.h"
#include "tavlen/collections/TweakCollection.h"
#include "tavlen/device/DeviceFiles.h"
#include "tavlen/foundation/coding/CodingError.h"
#include "tavlen/foundation/tasks/NotificationCenter.h"
#include "tavlen/items/TweakDiffNotifications.h"
#include "tavlen/items/TweaksDirectory.h"
#include "tavlen/store/TweakManager.h"

namespace tavlen::cli {

namespace {

namespace fs = std::filesystem;

std::optional<OpenedItem> itemNamed(const std::string& name) {
  std::vector<OpenedItem> found = TweakManager::openNamed(name);
  if (found.empty()) return std::nullopt;
  if (found.size() > 1) {
    std::string identifiers;
    for (const OpenedItem& opened : found) identifiers += " " + opened.item()->id();
    throw std::runtime_error(
        name + ": several items have that name; name one by its identifier:" + identifiers);
  }
  return std::move(found.front());
}

bool isStored(const std::string& id) {
  std::error_code ignored;
  return fs::symlink_status(TweaksDirectory::url() / id, ignored).type() !=
         fs::file_type::not_found;
}

/// Opens the item at `path`, which messages call `shown`.
OpenedItem itemAt(const std::string& path, const std::string& shown) {
  const fs::file_status status = DeviceRoot::shared().status(path);
  const bool isFolder = fs::is_directory(status);
  try {
    // Outside the store, a tweak's folder may have any name.
    if (isFolder || !fs::exists(status)) return TweakFile::open(path);
    return TweakManager::openAt(path);
  } catch (const DecodingError& error) {
    const std::string document =
        isFolder ? (path.ends_with('/') ? path : path + "/") + "Manifest.json" : path;
    throw std::runtime_error(document + ": " + errorText(error));
  } catch (const DescribedError& error) {
    throw std::runtime_error(shown + ": " + errorText(error));
  }
}

}  // namespace

bool isItemPath(const std::string& text) {
  std::error_code ignored;
  return text.find('/') != std::string::npos || text == "." || text == ".." ||
         fs::exists(fs::path(text) / "Manifest.json", ignored) ||
         (TweakCollection::isValidID(text) && fs::is_regular_file(text, ignored));
}

OpenedItem openedItem(const std::string& text) {
  if (isItemPath(text)) return itemAt(text, text);
  if (isStored(text)) return itemAt((TweaksDirectory::url() / text).string(), text);
  if (std::optional<OpenedItem> item = itemNamed(text)) return std::move(*item);
  std::error_code ignored;
  if (fs::exists(text, ignored)) return itemAt(text, text);
  throw std::runtime_error(text + ": no stored tweak or collection has that identifier or name");
}

TweakFile::Opened openedTweak(const std::string& text) {
  OpenedItem item = openedItem(text);
  if (auto* tweak = std::get_if<TweakFile::Opened>(&item)) return std::move(*tweak);
  throw std::runtime_error(text + ": is a collection, not a tweak");
}

std::shared_ptr<TweakFile> storedTweak(const std::string& text) { return openedTweak(text).file; }

std::optional<BrokenItem> brokenItem(const std::string& text) {
  if (isItemPath(text)) return std::nullopt;
  return TweakManager::brokenWithID(text);
}

std::filesystem::path folderOfItem(const std::string& text) {
  fs::path store = TweaksDirectory::url();
  if (!isItemPath(text)) return store;
  fs::path path = fs::absolute(text);
  if (!path.has_filename()) path = path.parent_path();
  const DeviceRoot root = DeviceRoot::shared();
  try {
    // However an entry of the store is named, and even if it is a link, it is locked there.
    if (root.followParent(path).parent_path() == store) return store;
    return canonical(root, path).parent_path();
  } catch (const std::system_error&) {
    return store;
  }
}

std::string kindOf(const TweakProtocol& item) {
  return dynamic_cast<const TweakFile*>(&item) != nullptr ? "tweak" : "collection";
}

void announce(TweakProtocol& item, GenericTweakDiffMode mode) {
  postTweakDiffs(NotificationCenter::default_(), {item.diffFor(mode)});
}

}  // namespace tavlen::cli
