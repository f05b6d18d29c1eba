#include "tavlen/foundation/files/DiskSync.h"

#include <cerrno>

#include "tavlen/foundation/files/FileDescriptor.h"
#include "tavlen/foundation/files/RetryOnInterrupt.h"

namespace tavlen {

int syncDescriptor(int descriptor) {
#ifdef __APPLE__
  // fsync() leaves the data in the drive's cache: fsync(2). Not every file system can do more.
  if (retryOnInterrupt([&] { return ::fcntl(descriptor, F_FULLFSYNC); }) != -1) return 0;
  if (errno != ENOTSUP && errno != ENOTTY && errno != EINVAL) return -1;
#endif
  return retryOnInterrupt([&] { return ::fsync(descriptor); });
}

void syncFile(const std::filesystem::path& file) {
  FileDescriptor::open(file, kOpenToRead).sync(file);
}

void syncFolder(const std::filesystem::path& folder) {
  const FileDescriptor opened =
      FileDescriptor::tryOpenAt(AT_FDCWD, folder.c_str(), O_RDONLY | O_DIRECTORY);
  if (opened) (void)syncDescriptor(opened.get());
}

}  // namespace tavlen
