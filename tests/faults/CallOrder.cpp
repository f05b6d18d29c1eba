#include "tests/faults/CallOrder.h"

#include <algorithm>
#include <set>
#include <span>

namespace tavlen::faults {

namespace {

bool isBelow(std::string_view path, std::string_view folder) {
  return path == folder ||
         (path.starts_with(folder) && path.substr(folder.size()).starts_with('/'));
}

/// Whether `file` is one of the documents in the item at `item`, or the item itself. What a tweak
/// carries beside them is not waited for.
bool isDocumentOf(const std::filesystem::path& file, const std::string& item) {
  if (file == item) return true;
  const std::string name = file.filename();
  return file.parent_path() == item &&
         (name == "Manifest.json" || name == "script.objs" || name == "Icon.png");
}

/// Whether listing shows it: it lies in the store, under names that do not begin with ".".
bool isVisible(const std::string& path, const std::string& store) {
  return isBelow(path, store) && path.find("/.", store.size()) == path.npos;
}

/// Without the slash that may stand at a folder's end.
std::string pathOf(const std::array<char, 400>& text) {
  std::string path = text.data();
  if (path.ends_with('/')) path.pop_back();
  return path;
}

bool isSynced(std::span<const Record> records, const std::string& path) {
  return std::any_of(records.begin(), records.end(), [&](const Record& record) {
    return record.call == Call::sync && record.error == 0 && pathOf(record.path) == path;
  });
}

}  // namespace

std::string orderBreaches(const Log& log, const std::filesystem::path& store) {
  const std::string folder = store.native();
  const std::span<const Record> records(log.records.data(), log.count);
  std::set<std::string> unsynced;
  std::string breaches;
  for (std::size_t index = 0; index < records.size(); ++index) {
    const Record& record = records[index];
    const std::string path = pathOf(record.path);
    const std::string newPath = pathOf(record.newPath);
    const auto checkFolder = [&](const std::string& item) {
      const std::string parent = std::filesystem::path(item).parent_path();
      if (!isSynced(records.subspan(index), parent)) {
        breaches += "its folder is not synced: " + item + "\n";
      }
    };
    if (record.error != 0) continue;
    switch (record.call) {
      case Call::create:
      case Call::write:
      case Call::truncate:
        unsynced.insert(path);
        if (isVisible(path, folder)) breaches += "written in its place: " + path + "\n";
        break;
      case Call::sync:
        unsynced.erase(path);
        break;
      case Call::makeFolder:
        if (isVisible(path, folder)) checkFolder(path);
        break;
      case Call::rename:
      case Call::link:
        if (!isVisible(newPath, folder)) break;
        for (const std::string& file : unsynced) {
          if (isDocumentOf(file, path)) breaches += "named before it is synced: " + file + "\n";
        }
        checkFolder(newPath);
        break;
      default:
        break;
    }
  }
  return breaches;
}

}  // namespace tavlen::faults
