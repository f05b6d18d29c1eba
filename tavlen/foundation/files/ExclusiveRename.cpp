#include "tavlen/foundation/files/ExclusiveRename.h"

#include <cerrno>
#include <cstdio>

namespace tavlen {

int renameExclusively(int folder, const char* from, const char* to) {
#ifdef __APPLE__
  const int result = ::renameatx_np(folder, from, folder, to, RENAME_EXCL);
#else
  const int result = ::renameat2(folder, from, folder, to, RENAME_NOREPLACE);
#endif
  if (result == 0) return 0;
  return errno == EINVAL || errno == ENOSYS ? ENOTSUP : errno;
}

}  // namespace tavlen
