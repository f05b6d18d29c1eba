#include "tests/faults/SampleStore.h"

#include <algorithm>
#include <utility>

#include "tavlen/device/DevicePaths.h"
#include "tavlen/device/DeviceRoot.h"
#include "tavlen/foundation/files/FileSystem.h"

namespace tavlen::faults {

namespace {

void replaceAll(std::string& text, const std::string& from, const std::string& to) {
  for (std::size_t at = text.find(from); at != text.npos; at = text.find(from, at + to.size())) {
    text.replace(at, from.size(), to);
  }
}

std::string manifestNamed(const std::string& name) {
  return R"({"configuration":{"name":")" + name +
         R"(","color":"darkRed","bundleID":"com.example.app"},"overrides":[],"hooks":[)"
         R"({"className":"A","selector":"number","signature":"q16@0:8","isClassMethod":false,)"
         R"("args":{"-1":{"type":"_ValueParameter<Int64>","value":7}}}]})";
}

}  // namespace

Tree readTree(const fs::path& folder, const ArchiveReader& readArchive) {
  Tree tree;
  for (auto entry = fs::recursive_directory_iterator(folder);
       entry != fs::recursive_directory_iterator(); ++entry) {
    const fs::path& path = entry->path();
    if (path.filename().native().starts_with('.')) {
      entry.disable_recursion_pending();
      continue;
    }
    const fs::file_status status = entry->symlink_status();
    const std::string name = path.native().substr(folder.native().size());
    std::string& text = tree[name];
    text = std::to_string(static_cast<int>(status.type())) + " " +
           std::to_string(static_cast<unsigned>(status.permissions())) + ":";
    if (fs::is_symlink(status)) {
      text += fs::read_symlink(path).native();
    } else if (readArchive && path.extension().native().starts_with(".tvx")) {
      for (const auto& [inside, contents] : readArchive(path)) tree[name + inside] = contents;
    } else if (fs::is_regular_file(status)) {
      text += readFile(path);
    }
  }
  return tree;
}

std::set<std::string> newItems(const Tree& tree, const Tree& old, const std::string& store) {
  std::set<std::string> items;
  for (auto entry = tree.lower_bound(store + "/"); entry != tree.end(); ++entry) {
    if (!entry->first.starts_with(store + "/")) break;
    const std::string item = entry->first.substr(0, entry->first.find('/', store.size() + 1));
    if (!old.contains(item)) items.insert(item);
  }
  return items;
}

Tree withPlainIdentifiers(const Tree& tree, const Tree& old, const std::string& store) {
  // Tweaks go by their manifests; a collection has one of its own, which holds identifiers.
  std::vector<std::pair<std::string, std::string>> tweaks;
  std::vector<std::pair<std::string, std::string>> names;
  for (const std::string& item : newItems(tree, old, store)) {
    const std::string id = item.substr(store.size() + 1);
    if (id.find('.') != id.npos) {
      names.emplace_back(id, "new.collection");
      continue;
    }
    const auto manifest = tree.find(item + "/Manifest.json");
    tweaks.emplace_back(manifest == tree.end() ? "" : manifest->second, id);
  }
  std::sort(tweaks.begin(), tweaks.end());
  std::size_t number = 0;
  for (const auto& [manifest, id] : tweaks) {
    names.emplace_back(id, "new-" + std::to_string(++number));
  }
  Tree plain;
  for (const auto& entry : tree) {
    std::string path = entry.first;
    std::string contents = entry.second;
    for (const auto& [id, name] : names) {
      replaceAll(path, id, name);
      replaceAll(contents, id, name);
    }
    plain[path] = contents;
  }
  return plain;
}

std::string difference(const Tree& expected, const Tree& found) {
  std::string text;
  for (const auto& [path, contents] : expected) {
    const auto other = found.find(path);
    if (other == found.end()) {
      text += "  gone: " + path + "\n";
    } else if (other->second != contents) {
      text += "  differs: " + path + ": " + other->second.substr(0, 200) + "\n";
    }
  }
  for (const auto& [path, contents] : found) {
    if (!expected.contains(path)) text += "  more: " + path + "\n";
  }
  return text;
}

SampleStore::SampleStore(const std::function<void()>& prepare)
    : root_(fs::canonical(folder_.path()) / "root"), copy_(folder_.path() / "copy") {
  const std::string store = "root" + std::string(kTweaksDir) + "/";
  folder_.write(store + kFirstTweak + "/Manifest.json", manifestNamed("First"));
  folder_.write(store + kFirstTweak + "/script.objs", "first();\n");
  folder_.write(store + kFirstTweak + "/Resources/note.txt", "a note");
  fs::create_directories(folder_.path() / (store + kFirstTweak) / "Executables");
  folder_.write(store + kSecondTweak + "/Manifest.json", manifestNamed("Second"));
  fs::create_directories(folder_.path() / (store + kSecondTweak) / "Resources");
  folder_.write(
      store + kCollection,
      R"({"configuration":{"name":"Both","color":"darkRed","bundleID":"com.example.app"},)"
      R"("tweaks":[")" +
          kFirstTweak + R"(",")" + kSecondTweak + R"("]})");
  DeviceRoot::setShared(DeviceRoot(root_));
  if (prepare) prepare();
  fs::copy(root_, copy_, fs::copy_options::recursive);
}

void SampleStore::reset() const {
  fs::remove_all(root_);
  fs::copy(copy_, root_, fs::copy_options::recursive);
}

}  // namespace tavlen::faults
