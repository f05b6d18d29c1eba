#include "tavlen/collections/TweakCollection.h"

#include <algorithm>
#include <string>
#include <string_view>
#include <system_error>
#include <unordered_map>
#include <unordered_set>

#include "tavlen/collections/TweakCollectionDiff.h"
#include "tavlen/collections/TweakCollectionManifest.h"
#include "tavlen/device/DeviceFiles.h"
#include "tavlen/foundation/files/DiskSync.h"
#include "tavlen/foundation/files/FileSystem.h"
#include "tavlen/foundation/files/FileTree.h"
#include "tavlen/items/StoredDocument.h"
#include "tavlen/items/TweakDiffNotifications.h"
#include "tavlen/items/TweakError.h"
#include "tavlen/items/TweakPoster.h"
#include "tavlen/items/TweaksDirectory.h"
#include "tavlen/tweaks/TweakFile.h"

namespace tavlen {

namespace {

namespace fs = std::filesystem;

// The names in an archive of a collection.
constexpr const char* kManifestFile = "Manifest.json";
constexpr const char* kTweaksFolder = "Tweaks";

/// Throws for a symbolic link: moving one would put into the store a reference to content
/// elsewhere.
void refuseLink(const fs::path& item) {
  std::error_code ignored;
  if (fs::is_symlink(item, ignored)) throw TweakError::notFound();
}

/// Refuses identifiers that cannot name a folder in the unpacked folder `tweaks`, which need not
/// exist. `ids` may name a member many times; each repetition costs a look-up.
void refuseMembers(const fs::path& tweaks, const std::vector<std::string>& ids) {
  refuseLink(tweaks);
  std::unordered_set<std::string_view> seen;
  for (const std::string& id : ids) {
    if (!seen.insert(id).second) continue;
    if (!isPlainComponent(id)) throw TweakError::notFound();
    refuseLink(tweaks / id);
  }
}

/// The collection in the unpacked folder `url`. Throws unless the folder can become an item.
TweakCollection::Opened checkedPayload(const fs::path& url) {
  refuseLink(url / kManifestFile);
  TweakCollection::Opened payload = TweakCollection::open(url / kManifestFile);
  refuseMembers(url / kTweaksFolder, payload.manifest._tweaks);
  return payload;
}

}  // namespace

std::shared_ptr<TweakCollection> TweakCollection::at(const std::filesystem::path& url) {
  std::shared_ptr<TweakCollection> collection(new TweakCollection(url));
  collection->validate();
  return collection;
}

TweakCollection::Opened TweakCollection::open(const std::filesystem::path& url) {
  std::shared_ptr<TweakCollection> collection(new TweakCollection(url));
  Manifest manifest = collection->manifest();
  return {std::move(collection), std::move(manifest)};
}

TweakCollection::Opened TweakCollection::opened(const std::filesystem::path& url,
                                                std::string_view document) {
  auto manifest = decodeDocument<Manifest>(document);
  return {std::shared_ptr<TweakCollection>(new TweakCollection(url)), std::move(manifest)};
}

ListedItem TweakCollection::listed(std::string path, std::string_view document) {
  Opened collection = opened(std::move(path), document);
  return {std::move(collection.file), collection.manifest.genericConfiguration()};
}

std::shared_ptr<TweakCollection> TweakCollection::handle(const std::filesystem::path& url) {
  return std::shared_ptr<TweakCollection>(new TweakCollection(url));
}

std::shared_ptr<TweakCollection> TweakCollection::create(std::string name, TweakColor color,
                                                         TweakGlyph glyph, std::string bundleID) {
  std::shared_ptr<TweakCollection> collection(new TweakCollection(uniqueTweakURL()));
  tweakPoster().performWithoutNotifications([&] {
    TweaksDirectory::create();
    Manifest manifest;
    manifest.configuration = {std::move(name), color, std::move(bundleID), std::move(glyph)};
    collection->setManifest(manifest);
    collection->manifest();
  });
  return collection;
}

std::shared_ptr<TweakCollection> TweakCollection::handlePayloadAt(
    const std::filesystem::path& url) {
  // Check everything before moving anything, so that nothing hostile or invalid enters the store.
  const Opened payload = checkedPayload(url);
  Manifest manifest = payload.manifest;
  const fs::path tweaks = url / kTweaksFolder;

  std::shared_ptr<TweakCollection> collection(new TweakCollection(uniqueTweakURL()));
  tweakPoster().performWithoutNotifications([&] {
    TweaksDirectory::create();
    syncFile(payload.file->url());
    moveItem(payload.file->url(), collection->url());
    std::unordered_map<std::string, std::string> newIDs;
    for (std::string& id : manifest._tweaks) {
      std::string& newID = newIDs[id];
      if (newID.empty()) newID = TweakFile::handlePayloadAt(tweaks / id)->id();
      id = newID;
    }
    collection->setManifest(manifest);
  });
  return collection;
}

TweakCollection::Unpacked TweakCollection::openPayloadAt(const std::filesystem::path& url) {
  Unpacked unpacked = {checkedPayload(url), {}};
  std::unordered_set<std::string_view> seen;
  for (const std::string& id : unpacked.collection.manifest._tweaks) {
    if (!seen.insert(id).second) continue;
    try {
      unpacked.members.push_back(TweakFile::open(url / kTweaksFolder / id));
    } catch (const std::exception&) {
      // Left out, as documented.
    }
  }
  return unpacked;
}

bool TweakCollection::isValidID(std::string_view text) { return text.ends_with(kIDSuffix); }

std::filesystem::path TweakCollection::uniqueTweakURL() {
  return TweaksDirectory::uniqueURL(kIDSuffix);
}

void TweakCollection::validate() const { manifest(); }

TweakCollection::Manifest TweakCollection::manifest() const {
  std::string bytes;
  try {
    bytes = readDocument(openedFile(DeviceRoot::shared(), path()));
  } catch (const std::system_error& error) {
    const bool isMissing = error.code() == std::errc::no_such_file_or_directory ||
                           error.code() == std::errc::not_a_directory;
    if (isMissing) throw TweakError::missing(id());
    throw;
  }
  return decodeDocument<Manifest>(bytes);
}

TweakManifest TweakCollection::genericManifest() const { return TweakManifest(manifest()); }

TweakConfiguration TweakCollection::genericConfiguration() const {
  return manifest().genericConfiguration();
}

void TweakCollection::setManifest(const Manifest& manifest) {
  replaceFile(DeviceRoot::shared(), url(), encodeDocument(manifest));
  tweakPoster().performNotificationPostingOperation([&] {
    postTweakDiffs(NotificationCenter::default_(),
                   {std::make_shared<Diff>(shared_from_this(), Diff::Mode::updateManifest)});
  });
}

void TweakCollection::updateManifest(const std::function<void(Manifest&)>& change) {
  Manifest changed = manifest();
  change(changed);
  setManifest(changed);
}

TweakDiff TweakCollection::diffFor(GenericTweakDiffMode mode) {
  const bool isDeletion = mode == GenericTweakDiffMode::delete_;
  return std::make_shared<Diff>(shared_from_this(),
                                isDeletion ? Diff::Mode::delete_ : Diff::Mode::create);
}

void TweakCollection::preparePayloadIn(const std::filesystem::path& directory) const {
  const fs::path tweaks = directory / kTweaksFolder;
  fs::create_directories(tweaks);
  // If url() is a symbolic link, copy the file that it refers to.
  copyItem(canonical(DeviceRoot::shared(), url()), directory / kManifestFile);
  // Take the members from the copy, because the collection may be edited concurrently.
  const Manifest copied = TweakCollection(directory / kManifestFile).manifest();
  std::unordered_set<std::string> done;  // a member may be named many times
  for (const std::shared_ptr<TweakFile>& tweak : copied.tweaks()) {
    if (done.insert(tweak->id()).second) tweak->preparePayloadIn(tweaks / tweak->id());
  }
}

void TweakCollection::Opened::preparePayloadIn(const std::filesystem::path& directory,
                                               std::span<const TweakFile::Opened> members) const {
  const fs::path tweaks = directory / kTweaksFolder;
  fs::create_directories(tweaks);
  Manifest kept = manifest;
  kept._tweaks.clear();
  for (const TweakFile::Opened& member : members) {
    kept._tweaks.push_back(member.file->id());
    member.file->preparePayloadIn(tweaks / member.file->id());
  }
  replaceFile(DeviceRoot::shared(), directory / kManifestFile, encodeDocument(kept));
  // Whatever the umask: archives of the same collection have the same bytes.
  fs::permissions(directory / kManifestFile, fs::perms(0644));
  for (const fs::path& folder : {directory, tweaks}) fs::permissions(folder, fs::perms(0755));
}

}  // namespace tavlen
