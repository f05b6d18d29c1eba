#include "tavlen/device/DeviceFiles.h"

#include <unistd.h>

#include <cerrno>
#include <system_error>
#include <utility>

#include "tavlen/foundation/base/SystemError.h"
#include "tavlen/foundation/files/FileSystem.h"
#include "tavlen/foundation/files/RetryOnInterrupt.h"

namespace tavlen {

namespace fs = std::filesystem;

RandomAccessFile openedFile(const DeviceRoot& root, const std::string& path) {
  return {root.open(path, kOpenToRead), path};
}

DeviceFolder::DeviceFolder(DeviceRoot root, fs::path path)
    : root_(std::move(root)),
      path_(std::move(path)),
      hasOwnLinks_(root_.hasOwnLinksAt(path_)),
      folder_(root_.open(path_, O_RDONLY | O_DIRECTORY)) {}

FileDescriptor DeviceFolder::opened() const {
  return FileDescriptor::openAt(folder_.get(), ".", kOpenFolder, path_);
}

RandomAccessFile DeviceFolder::openedFile(std::string name) const {
  if (!hasOwnLinks_) return RandomAccessFile(name, folder_.get());
  FileDescriptor file = FileDescriptor::tryOpenBelow(folder_.get(), name, kOpenToRead);
  if (!file && (errno == ELOOP || errno == ENOTDIR)) file = root_.open(path_ / name, kOpenToRead);
  if (!file) throwSystemError(name);
  return {std::move(file), std::move(name)};
}

std::optional<std::string_view> DeviceFolder::readSmall(const std::string& name,
                                                        std::span<char> buffer) const {
  const FileDescriptor file =
      hasOwnLinks_ ? FileDescriptor::tryOpenBelow(folder_.get(), name, kOpenToRead)
                   : FileDescriptor::tryOpenAt(folder_.get(), name.c_str(), kOpenToRead);
  if (!file) return std::nullopt;
  // At an offset, which pipes and terminals refuse. A device that fills the buffer is refused, too.
  std::size_t used = 0;
  while (used < buffer.size()) {
    const ssize_t count = retryOnInterrupt([&] {
      return ::pread(file.get(), buffer.data() + used, buffer.size() - used,
                     static_cast<off_t>(used));
    });
    if (count < 0) return std::nullopt;
    if (count == 0) break;
    used += static_cast<std::size_t>(count);
  }
  if (used == 0 || used == buffer.size()) return std::nullopt;
  return std::string_view(buffer.data(), used);
}

std::unique_ptr<FileReplacement> replacementOf(const DeviceRoot& root, const fs::path& path,
                                               std::string_view contents) {
  // Outside the root, links are the system's, which the replacement follows by itself.
  if (!root.hasOwnLinksAt(path)) return std::make_unique<FileReplacement>(path, contents);
  const fs::path target = root.follow(path);
  return std::make_unique<FileReplacement>(root.open(target.parent_path(), kOpenFolder),
                                           target.filename(), path, contents);
}

void replaceFile(const DeviceRoot& root, const fs::path& path, std::string_view contents) {
  replacementOf(root, path, contents)->commit();
}

fs::path canonical(const DeviceRoot& root, const fs::path& path) {
  std::error_code error;
  fs::path found = fs::canonical(root.follow(path), error);
  if (error) throw std::system_error(error, path.string());
  return found;
}

std::optional<fs::path> pathInside(const DeviceRoot& root, const fs::path& folder,
                                   std::string_view name) {
  if (!root.hasOwnLinksAt(folder)) return pathInside(folder, name);
  if (!isRelativeName(name)) return std::nullopt;
  try {
    const fs::path base = root.follow(folder);
    // Normalised first: a path that leaves the root by ".." would not be followed.
    const fs::path named = (base / name).lexically_normal();
    if (!isAtOrBelow(named, base)) return std::nullopt;
    fs::path file = root.follow(named);
    if (file == base || !isAtOrBelow(file, base)) return std::nullopt;
    return file;
  } catch (const std::system_error&) {
    return std::nullopt;
  }
}

}  // namespace tavlen
