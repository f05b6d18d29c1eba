#include "tavlen/store/TweakManager.h"

#include <algorithm>
#include <array>
#include <exception>
#include <string>
#include <system_error>
#include <tuple>
#include <unordered_set>
#include <utility>

#include "tavlen/collections/TweakCollection.h"
#include "tavlen/collections/TweakCollectionManifest.h"
#include "tavlen/device/DeviceFiles.h"
#include "tavlen/device/DevicePaths.h"
#include "tavlen/foundation/base/UUID.h"
#include "tavlen/foundation/files/FileSystem.h"
#include "tavlen/foundation/files/FileTree.h"
#include "tavlen/foundation/files/FolderReader.h"
#include "tavlen/foundation/files/TemporaryDirectory.h"
#include "tavlen/foundation/text/Characters.h"
#include "tavlen/foundation/zip/ZIPArchive.h"
#include "tavlen/items/StoredDocument.h"
#include "tavlen/items/TweaksDirectory.h"
#include "tavlen/tweaks/PackagedEntries.h"
#include "tavlen/tweaks/TweakFile.h"

namespace tavlen {

namespace {

namespace fs = std::filesystem;

constexpr const char* kPayloadFolder = "Payload";

/// The static members of TweakFile or TweakCollection, as a row of a table; see TweakProtocol.
struct Kind {
  std::string_view compressedExtension;
  bool (*isValidID)(std::string_view text);
  std::shared_ptr<TweakProtocol> (*at)(fs::path url);
  OpenedItem (*open)(fs::path url);
  std::string (*documentOf)(std::string_view id);
  OpenedItem (*opened)(fs::path url, std::string_view document);
  ListedItem (*listed)(std::string path, std::string_view document);
  std::shared_ptr<TweakProtocol> (*handle)(fs::path url);
  TweakConfiguration (*settingsIn)(std::string_view document);
  std::shared_ptr<TweakProtocol> (*handlePayloadAt)(const fs::path& url);
};

/// The part of a document that can be intact although the rest is broken.
template <class T>
struct Settings {
  typename T::Manifest::Configuration configuration;

  static constexpr auto codedFields() {
    return std::tuple{requiredField("configuration", &Settings::configuration)};
  }
};

template <class T>
constexpr Kind kindOf() {
  return {T::compressedExtension,
          T::isValidID,
          [](fs::path url) -> std::shared_ptr<TweakProtocol> { return T::at(std::move(url)); },
          [](fs::path url) -> OpenedItem { return T::open(std::move(url)); },
          T::documentOf,
          [](fs::path url, std::string_view document) -> OpenedItem {
            return T::opened(std::move(url), document);
          },
          T::listed,
          [](fs::path url) -> std::shared_ptr<TweakProtocol> { return T::handle(std::move(url)); },
          [](std::string_view document) {
            return TweakConfiguration(decodeDocument<Settings<T>>(document).configuration);
          },
          [](const fs::path& url) -> std::shared_ptr<TweakProtocol> {
            return T::handlePayloadAt(url);
          }};
}

/// The kinds, in the order in which they are tried.
constexpr std::array<Kind, 2> kKinds = {kindOf<TweakFile>(), kindOf<TweakCollection>()};

/// The kind of a stored item with that identifier; null if no kind accepts it.
const Kind* kindOfID(std::string_view id) {
  const auto* const kind =
      std::find_if(kKinds.begin(), kKinds.end(), [&](const Kind& k) { return k.isValidID(id); });
  return kind != kKinds.end() ? kind : nullptr;
}

/// The kind whose archives have the extension of `url`; null if there is none.
const Kind* kindOfArchive(const fs::path& url) {
  std::string extension = (url.has_filename() ? url : url.parent_path()).extension().string();
  if (extension.empty()) return nullptr;
  extension = lowercased(std::string_view(extension).substr(1));
  const auto* const kind = std::find_if(kKinds.begin(), kKinds.end(), [&](const Kind& k) {
    return k.compressedExtension == extension;
  });
  return kind != kKinds.end() ? kind : nullptr;
}

/// The parent of temporary folders, on the volume of the tweaks directory.
fs::path temporaryItemsParent() { return DeviceRoot::shared().resolve(kApplicationSupportDir); }

/// Turns a display name into a file name. "." and ".." are harmless once an extension is appended;
/// a leading dot is kept on purpose.
std::string archiveName(std::string name, const std::string& id, std::string_view extension) {
  constexpr std::size_t kLongestName = 255;
  constexpr std::string_view kNotInNames("/:\0", 3);
  if (name.empty()) name = id;
  for (std::size_t at = name.find_first_of(kNotInNames); at != std::string::npos;
       at = name.find_first_of(kNotInNames, at)) {
    name[at] = '-';
  }
  std::size_t length = std::min(name.size(), kLongestName - 1 - extension.size());
  if (length < name.size()) {
    while (length > 0 && isUTF8Continuation(name[length])) --length;
  }
  name.resize(length);
  return name.append(".").append(extension);
}

/// Throws for the first refused entry of a tweak before copying, so that the message names the
/// tweak's own file.
void requirePackaged(const fs::path& tweak) {
  const fs::path folder = DeviceRoot::shared().follow(tweak);
  const std::vector<RefusedEntry> refused = refusedEntries(folder);
  if (!refused.empty()) throwRefusal(folder / refused[0].path, refused[0].reason);
}

/// The same for any item.
void requirePackaged(const TweakProtocol& item) {
  const auto* collection = dynamic_cast<const TweakCollection*>(&item);
  if (collection == nullptr) return requirePackaged(item.url());
  std::unordered_set<std::string> seen;  // a member may be named many times
  for (const std::shared_ptr<TweakFile>& tweak : collection->manifest().tweaks()) {
    if (seen.insert(tweak->id()).second) requirePackaged(tweak->url());
  }
}

/// The kind of the item at `url`. Throws TweakManager::Error::unknownTweakType.
const Kind& kindAt(const fs::path& url) {
  const Kind* const kind =
      kindOfID((url.has_filename() ? url : url.parent_path()).filename().native());
  if (kind == nullptr) throw TweakManager::Error::unknownTweakType();
  return *kind;
}

/// The path of the item with that identifier. Throws TweakManager::Error::unknownTweakType.
fs::path storedURL(std::string_view id) {
  if (!isPlainComponent(id)) throw TweakManager::Error::unknownTweakType();
  return TweaksDirectory::url() / id;
}

/// Calls `visit` with the kind, the path and the document's bytes of every item in the tweaks
/// directory, in directory order. For items that cannot be read or for which `visit` throws, calls
/// `fail` with the identifier instead.
template <class Visit, class Fail>
void visitDocuments(const Visit& visit, const Fail& fail) {
  const fs::path folder = TweaksDirectory::url();
  try {
    const DeviceFolder store(DeviceRoot::shared(), folder);
    FolderReader names(store.opened(), folder);
    std::vector<char> buffer(std::size_t{64} << 10);  // for all but huge documents
    const std::string prefix = folder / "";
    while (const std::optional<std::string> name = names.next()) {
      const Kind* const kind = kindOfID(*name);
      if (kind == nullptr || isTemporaryName(*name)) continue;
      try {
        const std::string document = kind->documentOf(*name);
        if (const auto small = store.readSmall(document, buffer)) {
          visit(*kind, prefix + *name, *small);
        } else {
          visit(*kind, prefix + *name, readDocument(store.openedFile(document)));
        }
      } catch (const std::exception&) {
        fail(*name);
      }
    }
  } catch (const std::system_error&) {
    return;  // as documented: it cannot be listed
  }
}

/// The same, but leaves those items out, as documented for lists.
template <class Visit>
void visitDocuments(const Visit& visit) {
  visitDocuments(visit, [](const std::string& /*id*/) {});
}

/// The identifier of the stored item with the identifier `text`, in this case or, if there is none,
/// in another.
std::optional<std::string> storedID(std::string_view text) {
  if (!isPlainComponent(text) || kindOfID(text) == nullptr) return std::nullopt;
  const fs::path folder = TweaksDirectory::url();
  try {
    if (isTaken(DeviceRoot::shared().followParent(folder / text))) return std::string(text);
    const DeviceFolder store(DeviceRoot::shared(), folder);
    FolderReader names(store.opened(), folder);
    const std::string wanted = lowercased(text);
    while (std::optional<std::string> name = names.next()) {
      if (lowercased(*name) == wanted) return name;
    }
  } catch (const std::system_error&) {
    // There is no such name, or no store.
  }
  return std::nullopt;
}

/// A visitor that appends the items to `items`.
auto listInto(std::vector<ListedItem>& items) {
  return [&items](const Kind& kind, std::string path, std::string_view document) {
    items.push_back(kind.listed(std::move(path), document));
  };
}

/// The settings in the document of a broken item, if they are intact.
std::optional<TweakConfiguration> settingsOf(const Kind& kind, std::string_view id) {
  try {
    const fs::path document = TweaksDirectory::url() / kind.documentOf(id);
    return kind.settingsIn(readDocument(openedFile(DeviceRoot::shared(), document)));
  } catch (const std::exception&) {
    return std::nullopt;
  }
}

/// Implements export_() for `tweak`, whose displayed name is `name`.
fs::path exportAs(const std::string& name, const TweakProtocol& tweak, Progress* progress) {
  const std::string file = archiveName(name, tweak.id(), tweak.archiveExtension());
  TemporaryDirectory output(temporaryItemsParent());
  {
    const TemporaryDirectory temporary(temporaryItemsParent());
    const fs::path payload = temporary.path() / kPayloadFolder;
    const fs::path archive = temporary.path() / "Payload.zip";
    requirePackaged(tweak);
    tweak.preparePayloadIn(payload);
    ZIPArchive::zipItem(payload, archive, progress);
    moveItem(archive, output.path() / file);
  }
  return output.release() / file;
}

/// Unpacks an archive with that extension into the new folder `folder`.
void unpack(const fs::path& url, std::string_view extension, const fs::path& folder,
            Progress* progress) {
  const Kind* const kind = kindOfArchive(url);
  if (kind == nullptr || kind->compressedExtension != extension)
    throw TweakManager::Error::unknownTweakType();
  fs::path unpacked = folder;
  unpacked += ".unpacked";
  // Ignore entries next to it that other programs add, such as "__MACOSX".
  ZIPArchive::unzipItem(url, unpacked, progress, {}, kPayloadFolder);
  moveItem(unpacked / kPayloadFolder, folder);
}

}  // namespace

std::vector<std::shared_ptr<TweakProtocol>> TweakManager::allTweaks() {
  std::vector<std::shared_ptr<TweakProtocol>> tweaks;
  visitDocuments([&](const Kind& kind, std::string path, std::string_view document) {
    tweaks.push_back(kind.listed(std::move(path), document).item);
  });
  return tweaks;
}

std::vector<ListedItem> TweakManager::listedTweaks() {
  std::vector<ListedItem> items;
  visitDocuments(listInto(items));
  return items;
}

std::vector<ListedItem> TweakManager::listedTweaks(std::vector<BrokenItem>& broken) {
  std::vector<ListedItem> items;
  visitDocuments(listInto(items), [&](const std::string& id) {
    if (std::optional<BrokenItem> item = brokenWithID(id)) broken.push_back(std::move(*item));
  });
  return items;
}

FoundItems TweakManager::find(std::string_view text) {
  FoundItems found;
  if (const std::optional<std::string> id = storedID(text)) {
    try {
      found.items.push_back(openWithID(*id));
    } catch (const std::exception&) {
      found.broken.push_back(*id);
    }
    return found;
  }
  const std::string prefix = text.size() < kShortestPrefix ? std::string() : lowercased(text);
  const auto hasPrefix = [&](const std::string& id) {
    return !prefix.empty() && lowercased(id).starts_with(prefix);
  };
  std::vector<OpenedItem> named;
  visitDocuments(
      [&](const Kind& kind, const std::string& path, std::string_view document) {
        const std::string id = path.substr(path.rfind('/') + 1);
        const std::string name = kind.listed(path, document).configuration.name();
        const bool isNamed = name == text;
        if (isNamed || hasPrefix(id)) {
          (isNamed ? named : found.items).push_back(kind.opened(path, document));
        }
        found.names.push_back(name);
        found.identifiers.push_back(id);
      },
      [&](const std::string& id) {
        if (hasPrefix(id)) found.broken.push_back(id);
        found.identifiers.push_back(id);
      });
  if (!named.empty()) return {std::move(named), {}, {}, {}};
  if (found.items.empty() && found.broken.empty()) return found;
  return {std::move(found.items), std::move(found.broken), {}, {}};
}

std::optional<BrokenItem> TweakManager::brokenWithID(std::string_view id) {
  const Kind* const kind = kindOfID(id);
  if (kind == nullptr || !isPlainComponent(id)) return std::nullopt;
  const fs::path url = TweaksDirectory::url() / id;
  if (!isTaken(DeviceRoot::shared().followParent(url))) return std::nullopt;
  try {
    kind->at(url);
    return std::nullopt;
  } catch (const std::exception& error) {
    const auto* tweak = dynamic_cast<const TweakFile::Error*>(&error);
    if (tweak != nullptr && tweak->which() == TweakFile::ErrorCase::notFound) return std::nullopt;
    return BrokenItem{kind->handle(url), error.what(), settingsOf(*kind, id)};
  }
}

std::shared_ptr<TweakProtocol> TweakManager::tweakWithID(std::string_view id) {
  return tweakAt(storedURL(id));
}

std::shared_ptr<TweakProtocol> TweakManager::tweakAt(std::filesystem::path url) {
  const Kind& kind = kindAt(url);
  return kind.at(std::move(url));
}

OpenedItem TweakManager::openWithID(std::string_view id) { return openAt(storedURL(id)); }

OpenedItem TweakManager::openAt(std::filesystem::path url) {
  const Kind& kind = kindAt(url);
  return kind.open(std::move(url));
}

bool TweakManager::canHandle(const std::filesystem::path& url) {
  return kindOfArchive(url) != nullptr;
}

std::shared_ptr<TweakProtocol> TweakManager::decompressAt(const std::filesystem::path& url,
                                                          Progress* progress) {
  const Kind* const kind = kindOfArchive(url);
  if (kind == nullptr) throw Error::unknownTweakType();
  const TemporaryDirectory temporary(temporaryItemsParent());
  const fs::path unpacked = temporary.path() / newUUIDText();
  // Ignore entries next to it that other programs add, such as "__MACOSX".
  ZIPArchive::unzipItem(url, unpacked, progress, {}, kPayloadFolder);
  return kind->handlePayloadAt(unpacked / kPayloadFolder);
}

TweakFile::Opened TweakManager::openTweakArchive(const std::filesystem::path& url,
                                                 const std::filesystem::path& folder,
                                                 Progress* progress) {
  unpack(url, TweakFile::compressedExtension, folder, progress);
  return TweakFile::open(folder);
}

TweakCollection::Unpacked TweakManager::openCollectionArchive(const std::filesystem::path& url,
                                                              const std::filesystem::path& folder,
                                                              Progress* progress) {
  unpack(url, TweakCollection::compressedExtension, folder, progress);
  return TweakCollection::openPayloadAt(folder);
}

std::filesystem::path TweakManager::export_(const TweakProtocol& tweak, Progress* progress) {
  return exportAs(tweak.genericConfiguration().name(), tweak, progress);
}

std::filesystem::path TweakManager::exportOpened(const OpenedItem& opened,
                                                 std::span<const TweakFile::Opened> members,
                                                 const std::filesystem::path& folder,
                                                 Progress* progress) {
  const fs::path payload = folder / kPayloadFolder;
  if (const TweakCollection::Opened* collection = opened.collection()) {
    for (const TweakFile::Opened& member : members) requirePackaged(member.file->url());
    collection->preparePayloadIn(payload, members);
  } else {
    requirePackaged(*opened.item());
    opened.item()->preparePayloadIn(payload);
  }
  const std::shared_ptr<TweakProtocol> item = opened.item();
  fs::path archive =
      folder / archiveName(opened.configuration().name(), item->id(), item->archiveExtension());
  ZIPArchive::zipItem(payload, archive, progress);
  return archive;
}

TweakManager::Error TweakManager::Error::unknownTweakType() {
  return {Case::unknownTweakType, {"tweak_manager.error.unknown_tweak_type", "Unknown tweak type"}};
}

}  // namespace tavlen
