#include "tavlen/store/StoreSnapshot.h"

#include <algorithm>
#include <functional>
#include <set>
#include <system_error>
#include <utility>

#include "tavlen/collections/TweakCollection.h"
#include "tavlen/foundation/files/FolderWalk.h"
#include "tavlen/items/TweaksDirectory.h"
#include "tavlen/tweaks/TweakFile.h"

namespace tavlen {

namespace {

namespace fs = std::filesystem;

/// In the order of StoreSnapshot::Document, without the last one, which is a folder.
constexpr std::array<const char*, 3> kDocumentNames = {"Manifest.json", TweakFile::scriptFile,
                                                       TweakFile::iconFile};

}  // namespace

StoreSnapshot StoreSnapshot::take() {
  StoreSnapshot snapshot;
  const fs::path store = TweaksDirectory::url();
  std::error_code error;
  fs::directory_iterator entry(store, error);
  snapshot.folders_.push_back(error ? existingFolder(store.parent_path()) : store);
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
    const fs::path folder = linkTarget(entry);
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
  item.back() = stampOfFiles(linkTarget(folder / TweakFile::resourcesFolder));
  return item;
}

std::optional<FileStamp> StoreSnapshot::stampOfFiles(const fs::path& folder) {
  FileStamp all = {};
  std::set<fs::path> folders = {folder};
  walkFolder(
      folder,
      [&](const fs::directory_entry& entry) {
        const fs::path& path = entry.path();
        if (path.filename().native().starts_with('.')) return false;
        std::error_code unknown;
        if (entry.symlink_status(unknown).type() == fs::file_type::directory) folders.insert(path);
        const std::optional<FileStamp> stamp = stampOf(path);
        if (!stamp) return true;
        // A sum, which does not depend on the order of the entries.
        all.volume += std::hash<std::string>()(path.native() + '\0' + std::to_string(stamp->file) +
                                               ' ' + std::to_string(stamp->seconds) + ' ' +
                                               std::to_string(stamp->nanoseconds));
        all.size += stamp->size;
        ++all.file;
        return true;
      },
      // A folder that cannot be read is not watched, and what it holds is not seen to change.
      [&](const fs::path& unread, std::error_code /*error*/) { folders.erase(unread); });
  folders_.insert(folders_.end(), folders.begin(), folders.end());
  return all.file > 0 ? std::optional(all) : std::nullopt;
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
