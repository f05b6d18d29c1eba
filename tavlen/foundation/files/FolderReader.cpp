#include "tavlen/foundation/files/FolderReader.h"

#include <cerrno>
#include <utility>

#include "tavlen/foundation/base/SystemError.h"

namespace tavlen {

FolderReader::FolderReader(FileDescriptor folder, std::filesystem::path shown)
    : shown_(std::move(shown)), stream_(::fdopendir(folder.get())) {
  if (stream_ == nullptr) throwSystemError(shown_);
  folder.release();  // now owned by the stream
}

std::optional<std::string> FolderReader::next() {
  for (;;) {
    errno = 0;
    const dirent* entry = ::readdir(stream_.get());  // NOLINT(concurrency-mt-unsafe): own stream
    if (entry == nullptr && errno != 0) throwSystemError(shown_);
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

}  // namespace tavlen
