#include "tavlen/store/FileStamp.h"

#include <sys/stat.h>

#include <system_error>

#include "tavlen/device/DeviceRoot.h"
#include "tavlen/foundation/files/FileTimes.h"

namespace tavlen {

namespace {

namespace fs = std::filesystem;

}  // namespace

std::optional<FileStamp> stampOf(const fs::path& file) {
  struct stat status {};
  if (::lstat(linkTarget(file).c_str(), &status) != 0 || !S_ISREG(status.st_mode)) {
    return std::nullopt;
  }
  const timespec& written = modificationTime(status);
  return FileStamp{static_cast<std::uint64_t>(status.st_dev), status.st_ino, status.st_size,
                   written.tv_sec, written.tv_nsec};
}

fs::path linkTarget(const fs::path& path) {
  std::error_code ignored;
  // Most entries are no links, and finding that out takes one call.
  if (!fs::is_symlink(path, ignored)) return path;
  try {
    const DeviceRoot root = DeviceRoot::shared();
    return root.hasOwnLinksAt(path) ? root.follow(path) : fs::canonical(path);
  } catch (const std::system_error&) {
    return {};
  }
}

fs::path existingFolder(fs::path folder) {
  std::error_code ignored;
  while (folder.has_relative_path() && !fs::is_directory(folder, ignored)) {
    folder = folder.parent_path();
  }
  return folder;
}

}  // namespace tavlen
