#include "kvfileops/FolderReader.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>
#include <utility>

#include "kvfileops/Failure.h"

namespace tavlen::fileops {

std::optional<Descriptor> openFolder(int parent, const std::string& name,
                                     const std::filesystem::path& shown) {
  Descriptor folder(
      ::openat(parent, name.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
  if (folder.get() >= 0) return folder;
  if (errno == ENOTDIR || errno == ELOOP || errno == ENOENT) return std::nullopt;
  fail(errno, shown);
}

std::optional<Descriptor> openRegularFile(int parent, const std::string& name,
                                          const std::filesystem::path& shown) {
  struct stat status {};
  // Asked first, because opening a device can make it act.
  if (::fstatat(parent, name.c_str(), &status, AT_SYMLINK_NOFOLLOW) != 0) fail(errno, shown);
  if (!S_ISREG(status.st_mode)) return std::nullopt;
  Descriptor file(
      ::openat(parent, name.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
  if (file.get() < 0 && errno == ELOOP) return std::nullopt;
  if (file.get() < 0 || ::fstat(file.get(), &status) != 0) fail(errno, shown);
  if (!S_ISREG(status.st_mode)) return std::nullopt;
  return file;
}

FolderReader::FolderReader(Descriptor folder, std::filesystem::path shown)
    : shown_(std::move(shown)), stream_(::fdopendir(folder.get())) {
  if (stream_ == nullptr) fail(errno, shown_);
  folder.release();  // the stream's now
}

std::optional<std::string> FolderReader::next() {
  for (;;) {
    errno = 0;
    const dirent* entry = ::readdir(stream_.get());  // NOLINT(concurrency-mt-unsafe): own stream
    if (entry == nullptr && errno != 0) fail(errno, shown_);
    if (entry == nullptr) return std::nullopt;
    std::string name = entry->d_name;
    if (name != "." && name != "..") return name;
  }
}

std::vector<std::string> FolderReader::first(std::size_t most) {
  ::rewinddir(stream_.get());
  std::vector<std::string> names;
  while (names.size() < most) {
    std::optional<std::string> name = next();
    if (!name) break;
    names.push_back(std::move(*name));
  }
  return names;
}

}  // namespace tavlen::fileops
