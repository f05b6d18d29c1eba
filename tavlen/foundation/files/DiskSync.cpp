#include "tavlen/foundation/files/DiskSync.h"

#include "tavlen/foundation/files/FileDescriptor.h"
#include "tavlen/foundation/files/RetryOnInterrupt.h"

namespace tavlen {

void syncFile(const std::filesystem::path& file) {
  FileDescriptor::open(file, kOpenToRead).sync(file);
}

void syncFolder(const std::filesystem::path& folder) {
  const FileDescriptor opened =
      FileDescriptor::tryOpenAt(AT_FDCWD, folder.c_str(), O_RDONLY | O_DIRECTORY);
  if (opened) (void)retryOnInterrupt([&] { return ::fsync(opened.get()); });
}

}  // namespace tavlen
