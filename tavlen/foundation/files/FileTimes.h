#pragma once

#include <sys/stat.h>

namespace tavlen {

/// When the contents of a file were last written. Threads: any.
inline const timespec& modificationTime(const struct stat& status) {
#ifdef __APPLE__
  return status.st_mtimespec;
#else
  return status.st_mtim;
#endif
}

/// When the contents, the owner, the permissions or the names of a file last changed.
inline const timespec& changeTime(const struct stat& status) {
#ifdef __APPLE__
  return status.st_ctimespec;
#else
  return status.st_ctim;
#endif
}

}  // namespace tavlen
