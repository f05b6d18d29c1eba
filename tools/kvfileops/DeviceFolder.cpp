#include "kvfileops/DeviceFolder.h"

#include <algorithm>
#include <cstdlib>
#include <optional>
#include <system_error>

#include "kvfileops/CallerRights.h"
#include "kvfileops/OpenEntry.h"
#include "kvfileops/Refusal.h"
#include "tavlen/foundation/files/FileSystem.h"

namespace tavlen::fileops {

namespace {

/// The path from `folder` to `path`; nothing where that lies elsewhere. Both are without links and
/// dots.
std::optional<std::filesystem::path> pathFrom(const std::filesystem::path& folder,
                                              const std::filesystem::path& path) {
  auto [inFolder, rest] = std::mismatch(folder.begin(), folder.end(), path.begin(), path.end());
  if (inFolder != folder.end()) return std::nullopt;
  std::filesystem::path relative;
  for (; rest != path.end(); ++rest) relative /= *rest;
  return relative;
}

}  // namespace

DeviceRoot rootFromEnvironment() {
  // With lent rights, the caller must not choose which folder stands for the device.
  if (hasLentRights()) return DeviceRoot();
  const char* text = std::getenv("TAVLEN_ROOT");  // NOLINT(concurrency-mt-unsafe): one thread
  if (text == nullptr || *text == '\0') return DeviceRoot();
  const std::filesystem::path root(text);
  std::error_code ignored;
  if (!root.is_absolute() || !std::filesystem::is_directory(root, ignored)) {
    throw Refusal(root, "TAVLEN_ROOT has to be the absolute path of a folder");
  }
  return DeviceRoot(root);
}

DeviceFolder::DeviceFolder(const DeviceRoot& root, std::string_view devicePath)
    : folder_(root.resolve(devicePath), linksToFollow()) {
  const std::filesystem::path rootPath = TrustedFolder(root.url(), linksToFollow()).path();
  if (!pathFrom(rootPath, path())) {
    throw Refusal(path(), "lies outside the root, " + rootPath.string());
  }
}

std::filesystem::path DeviceFolder::relativePath(const std::filesystem::path& path) const {
  const std::filesystem::path entry = withoutSlashAtEnd(path);
  const std::string name = entry.filename().string();
  if (!entry.is_absolute() || !isPlainComponent(name)) {
    throw Refusal(path, "is no absolute path of an entry");
  }
  const Links links = linksToFollow();
  const CallerRights rights;  // errors tell nothing about folders that are closed to the caller
  const auto folder = pathFrom(this->path(), TrustedFolder(entry.parent_path(), links).path());
  if (!folder) throw Refusal(path, "does not lie below " + this->path().string());
  return *folder / name;
}

std::filesystem::path withoutSlashAtEnd(const std::filesystem::path& path) {
  std::string text = path.string();
  while (text.size() > 1 && text.back() == '/') text.pop_back();
  return text;
}

FileDescriptor descend(const FileDescriptor& from, const std::filesystem::path& relative,
                       const std::filesystem::path& shown) {
  FileDescriptor folder = FileDescriptor::openAt(from.get(), ".", kOpenToPass, shown);
  for (const std::filesystem::path& component : relative) {
    folder = FileDescriptor::openAt(folder.get(), component.c_str(), kOpenToPass, shown);
  }
  return folder;
}

}  // namespace tavlen::fileops
