#include "kvfileops/DeviceFolder.h"

#include <algorithm>
#include <cstdlib>
#include <iterator>
#include <system_error>

#include "kvfileops/NewFolder.h"
#include "kvfileops/OpenEntry.h"
#include "kvfileops/Refusal.h"
#include "tavlen/foundation/files/FileSystem.h"

namespace tavlen::fileops {

namespace {

/// `path` as seen from `folder`; nothing where it lies elsewhere. Both are free of links and dots.
std::optional<std::filesystem::path> pathFrom(const std::filesystem::path& folder,
                                              const std::filesystem::path& path) {
  auto [inFolder, rest] = std::mismatch(folder.begin(), folder.end(), path.begin(), path.end());
  if (inFolder != folder.end()) return std::nullopt;
  std::filesystem::path relative;
  for (; rest != path.end(); ++rest) relative /= *rest;
  return relative;
}

std::filesystem::path withoutSlashAtEnd(const std::filesystem::path& path) {
  std::string text = path.string();
  while (text.size() > 1 && text.back() == '/') text.pop_back();
  return text;
}

}  // namespace

DeviceRoot rootFromEnvironment() {
  const char* text = ::secure_getenv("TAVLEN_ROOT");
  if (text == nullptr || *text == '\0') return DeviceRoot();
  const std::filesystem::path root(text);
  std::error_code ignored;
  if (!root.is_absolute() || !std::filesystem::is_directory(root, ignored)) {
    throw Refusal(root, "TAVLEN_ROOT is to be the absolute path of a folder");
  }
  return DeviceRoot(root);
}

DeviceFolder::DeviceFolder(const DeviceRoot& root, std::string_view devicePath)
    : root_(std::filesystem::canonical(root.url())),
      path_(std::filesystem::weakly_canonical(root.resolve(devicePath))) {
  if (!pathFrom(root_, path_)) throw Refusal(path_, "lies outside the root, " + root_.string());
}

std::optional<FileDescriptor> DeviceFolder::open() const {
  std::error_code error;
  if (!std::filesystem::exists(path_, error) && !error) return std::nullopt;
  return descend(FileDescriptor::open(root_, kOpenPassage), *pathFrom(root_, path_), path_);
}

FileDescriptor DeviceFolder::make() const {
  FileDescriptor folder = FileDescriptor::open(root_, kOpenPassage);
  const std::filesystem::path relative = *pathFrom(root_, path_);
  for (auto component = relative.begin(); component != relative.end(); ++component) {
    // What leads to the folder belongs to the device, not to whoever came first.
    const auto owner = std::next(component) == relative.end() ? Owner::caller : Owner::program;
    folder = makeFolder(folder.get(), component->string(), owner, path_);
  }
  return folder;
}

std::filesystem::path DeviceFolder::relativePath(const std::filesystem::path& path) const {
  const std::filesystem::path entry = withoutSlashAtEnd(path);
  const std::string name = entry.filename().string();
  if (!entry.is_absolute() || !isPlainComponent(name)) {
    throw Refusal(path, "is no absolute path of an entry");
  }
  const auto folder = pathFrom(path_, std::filesystem::weakly_canonical(entry.parent_path()));
  if (!folder) throw Refusal(path, "does not lie below " + path_.string());
  return *folder / name;
}

FileDescriptor descend(FileDescriptor from, const std::filesystem::path& relative,
                       const std::filesystem::path& shown) {
  for (const std::filesystem::path& component : relative) {
    from = FileDescriptor::openAt(from.get(), component.c_str(), kOpenPassage, shown);
  }
  return from;
}

}  // namespace tavlen::fileops
