#include "tavlen/store/StoreSnapshot.h"

#include <sys/stat.h>

#include <algorithm>
#include <system_error>
#include <utility>

#include "tavlen/collections/TweakCollection.h"
#include "tavlen/device/DeviceRoot.h"
#include "tavlen/items/TweaksDirectory.h"
#include "tavlen/tweaks/TweakFile.h"

namespace tavlen {

namespace {

namespace fs = std::filesystem;

/// In the order of StoreSnapshot::Document.
constexpr std::array<const char*, 3> kDocumentNames = {"Manifest.json", "script.objs", "Icon.png"};

/// The closest parent folder of `path` that exists.
fs::path existingParent(fs::path path) {
  std::error_code ignored;
  do {
    path = path.parent_path();
  } while (path.has_relative_path() && !fs::is_directory(path, ignored));
  return path;
}

/// What `path` is, or leads to as a link. Below another root than "/" the device's links count;
/// most entries are none, and finding that out takes one call.
fs::path target(const fs::path& path) {
  std::error_code ignored;
  if (!fs::is_symlink(path, ignored)) return path;
  try {
    const DeviceRoot root = DeviceRoot::shared();
    return root.hasOwnLinksAt(path) ? root.follow(path) : fs::canonical(path);
  } catch (const std::system_error&) {
    return {};
  }
}

}  // namespace

StoreSnapshot StoreSnapshot::take() {
  StoreSnapshot snapshot;
  const fs::path store = TweaksDirectory::url();
  std::error_code error;
  fs::directory_iterator entry(store, error);
  snapshot.folders_.push_back(error ? existingParent(store) : store);
  for (; !error && entry != fs::directory_iterator(); entry.increment(error)) {
    snapshot.add(entry->path());
  }
  std::sort(snapshot.folders_.begin(), snapshot.folders_.end());
  return snapshot;
}

void StoreSnapshot::add(const fs::path& entry) {
  const std::string id = entry.filename().native();
  if (id.starts_with('.')) return;
  Item item;
  if (TweakFile::isValidID(id)) {
    const fs::path folder = target(entry);
    std::error_code ignored;
    // Watch the folder even without a manifest: it may be created later.
    if (fs::is_directory(folder, ignored)) folders_.push_back(folder);
    item = tweakAt(folder);
  } else if (id.ends_with(TweakCollection::kIDSuffix)) {
    item.front() = stampOf(entry);
  }
  if (item.front()) items_.emplace(id, item);
}

StoreSnapshot::Item StoreSnapshot::tweakAt(const fs::path& folder) {
  Item item;
  std::transform(kDocumentNames.begin(), kDocumentNames.end(), item.begin(),
                 [&](const char* name) { return stampOf(folder / name); });
  return item;
}

std::optional<StoreSnapshot::Stamp> StoreSnapshot::stampOf(const fs::path& file) {
  struct stat status {};
  if (::lstat(target(file).c_str(), &status) != 0 || !S_ISREG(status.st_mode)) return std::nullopt;
#ifdef __APPLE__
  const timespec& written = status.st_mtimespec;
#else
  const timespec& written = status.st_mtim;
#endif
  return Stamp{static_cast<std::uint64_t>(status.st_dev), status.st_ino, status.st_size,
               written.tv_sec, written.tv_nsec};
}

std::vector<StoreSnapshot::Document> StoreSnapshot::difference(const Item& before,
                                                               const Item& after) {
  std::vector<Document> documents;
  for (std::size_t index = 0; index < kDocuments; ++index) {
    if (before.at(index) != after.at(index)) documents.push_back(static_cast<Document>(index));
  }
  return documents;
}

std::vector<StoreSnapshot::Change> StoreSnapshot::changesSince(const StoreSnapshot& before) const {
  std::vector<Change> changes;
  const auto add = [&](Change::Kind kind, const std::string& id, const Item& old,
                       const Item& item) {
    std::vector<Document> documents = difference(old, item);
    if (!documents.empty()) changes.push_back({kind, id, std::move(documents)});
  };
  auto old = before.items_.begin();
  auto item = items_.begin();
  while (old != before.items_.end() || item != items_.end()) {
    const bool isGone =
        item == items_.end() || (old != before.items_.end() && old->first < item->first);
    const bool isNew =
        old == before.items_.end() || (item != items_.end() && item->first < old->first);
    if (isGone) {
      add(Change::Kind::deleted, old->first, old->second, {});
    } else if (isNew) {
      add(Change::Kind::created, item->first, {}, item->second);
    } else {
      add(Change::Kind::changed, item->first, old->second, item->second);
    }
    if (!isNew) ++old;
    if (!isGone) ++item;
  }
  return changes;
}

std::vector<std::string> StoreSnapshot::ids() const {
  std::vector<std::string> ids;
  ids.reserve(items_.size());
  for (const auto& entry : items_) ids.push_back(entry.first);
  return ids;
}

}  // namespace tavlen
