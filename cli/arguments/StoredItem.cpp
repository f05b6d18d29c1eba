#include "cli/arguments/StoredItem.h"

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <initializer_list>
#include <optional>
#include <stdexcept>
#include <string_view>
#include <system_error>
#include <utility>
#include <vector>

#include "cli/arguments/AmbiguousItem.h"
#include "cli/arguments/ArchiveFile.h"
#include "cli/terminal/ShownText.h"
#include "tavlen/device/DeviceFiles.h"
#include "tavlen/foundation/tasks/NotificationCenter.h"
#include "tavlen/foundation/text/Characters.h"
#include "tavlen/foundation/text/Suggestion.h"
#include "tavlen/items/TweakDiffNotifications.h"
#include "tavlen/items/TweaksDirectory.h"
#include "tavlen/store/TweakManager.h"

namespace tavlen::cli {

namespace {

namespace fs = std::filesystem;

bool endsInAny(const std::string& text, std::initializer_list<const char*> extensions) {
  const std::string name = lowercased(text);
  return std::any_of(extensions.begin(), extensions.end(),
                     [&](const char* extension) { return name.ends_with(extension); });
}

/// Throws for a text or an archive, which has to become an item first.
void requireItem(const std::string& path) {
  switch (formOf(path)) {
    case ItemForm::text:
      if (isArchive(path)) throw std::runtime_error(path + ": " + kOtherArchive);
      throw std::runtime_error(path + ": is a text, not a stored item; apply makes one of it");
    case ItemForm::archive:
      throw std::runtime_error(path + ": is an archive, not a stored item; import makes one of it");
    case ItemForm::item:
      break;
  }
}

/// Opens the item at `path`, which messages call `shown`.
OpenedItem itemAt(const std::string& path, const std::string& shown) {
  const fs::file_status status = DeviceRoot::shared().status(path);
  const bool isFolder = fs::is_directory(status);
  const std::string document =
      isFolder ? (path.ends_with('/') ? path : path + "/") + kDocumentFile : path;
  if (!fs::exists(status)) throw std::system_error(ENOENT, std::generic_category(), shown);
  if (!isFolder && !path.ends_with(TweakCollection::kIDSuffix))
    throw std::runtime_error(shown + ": the document of a tweak must be called " + kDocumentFile);
  try {
    // Outside the store, a tweak's folder may have any name.
    if (isFolder) return TweakFile::open(path);
    return TweakManager::openAt(path);
  } catch (const TweakFile::Error& error) {
    const bool isEmpty = error.which() == TweakFile::ErrorCase::missing && isItemPath(shown);
    throw std::runtime_error(
        shown + ": " +
        (isEmpty ? std::string("has neither ") + kDocumentFile + " nor " + kTextFile
                 : errorText(error)));
  } catch (const DecodingError& error) {
    throw documentError(document, error);
  } catch (const std::system_error& error) {
    throw fileError(document, error, kUnreadableTweakCode);
  } catch (const DescribedError& error) {
    throw std::runtime_error(shown + ": " + errorText(error));
  }
}

/// The name of the rule, for programs.
const char* codeOf(DecodingError::Case which) {
  switch (which) {
    case DecodingError::Case::keyNotFound:
      return "missing-key";
    case DecodingError::Case::typeMismatch:
    case DecodingError::Case::valueNotFound:
      return "unexpected-value";
    case DecodingError::Case::dataCorrupted:
      break;
  }
  return "malformed-document";
}

/// What may have been meant by `text`, which names nothing, to be shown after a message.
std::string hintFor(const std::string& text, const FoundItems& found) {
  std::error_code ignored;
  if (fs::exists(text, ignored)) return "; for the file or folder here, write ./" + text;
  std::vector<std::string_view> names(found.names.begin(), found.names.end());
  // The beginning of an identifier is as good as the whole.
  if (text.size() >= TweakManager::kShortestPrefix) {
    for (const std::string_view id : found.identifiers) names.push_back(id.substr(0, text.size()));
  }
  const auto closest = closestName(text, names);
  return closest ? "; did you mean \"" + std::string(*closest) + "\"?" : "";
}

}  // namespace

PlacedError documentError(const std::string& document, const DecodingError& error) {
  Diagnostic diagnostic{.severity = Diagnostic::kError, .message = error.text(), .file = document};
  if (!error.codingPath().empty()) diagnostic.place = error.codingPath().text();
  if (error.position()) {
    diagnostic.line = error.position()->line;
    diagnostic.column = error.position()->column;
  }
  diagnostic.code = codeOf(error.which());
  return PlacedError(std::move(diagnostic));
}

bool isItemPath(const std::string& text) {
  return text.find('/') != std::string::npos || text == "." || text == ".." || text == "-" ||
         endsInAny(text, {".toml", ".json", ".tvx", ".tvxc"});
}

ItemForm formOf(const std::string& path) {
  if (path == "-") return ItemForm::text;
  const DeviceRoot root = DeviceRoot::shared();
  const auto hasFile = [&](const char* name) {
    return fs::exists(root.status(fs::path(path) / name));
  };
  const fs::file_status status = root.status(path);
  if (fs::is_directory(status)) {
    return hasFile(kTextFile) && !hasFile(kDocumentFile) ? ItemForm::text : ItemForm::item;
  }
  if (endsInAny(path, {".toml"})) return ItemForm::text;
  if (endsInAny(path, {".tvx", ".tvxc"})) return ItemForm::archive;
  // Any other file is a text, whatever its name: a pipe such as <(command) has none to tell by.
  const bool isItem = endsInAny(path, {".json", TweakCollection::kIDSuffix.data()});
  return isItem || !fs::exists(status) ? ItemForm::item : ItemForm::text;
}

std::string itemFolder(const std::string& path) {
  const fs::path document = path;
  if (document.filename() != kDocumentFile) return path;
  const fs::path folder = document.parent_path();
  return folder.empty() ? "." : folder.string();
}

OpenedItem openedItem(const std::string& text) {
  if (isItemPath(text)) {
    requireItem(text);
    return itemAt(itemFolder(text), text);
  }
  FoundItems found = TweakManager::find(text);
  if (found.items.size() + found.broken.size() > 1) refuseAmbiguous(text, found);
  if (!found.items.empty()) return std::move(found.items.front());
  // Opened once more for its error.
  if (!found.broken.empty())
    return itemAt((TweaksDirectory::url() / found.broken.front()).string(), text);
  throw std::runtime_error(text + ": no stored tweak or collection has that identifier or name" +
                           hintFor(text, found));
}

TweakFile::Opened openedTweak(const std::string& text) {
  OpenedItem item = openedItem(text);
  if (auto* tweak = std::get_if<TweakFile::Opened>(&item)) return std::move(*tweak);
  throw std::runtime_error(text + ": is a collection, not a tweak");
}

std::shared_ptr<TweakFile> storedTweak(const std::string& text) { return openedTweak(text).file; }

std::optional<BrokenItem> brokenItem(const std::string& text) {
  if (isItemPath(text)) return std::nullopt;
  const FoundItems found = TweakManager::find(text);
  if (!found.items.empty() || found.broken.size() != 1) return std::nullopt;
  return TweakManager::brokenWithID(found.broken.front());
}

std::filesystem::path folderOfItem(const std::string& text) {
  fs::path store = TweaksDirectory::url();
  if (!isItemPath(text)) return store;
  fs::path path = fs::absolute(itemFolder(text));
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
