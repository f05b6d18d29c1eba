#include "tavlen/foundation/files/ExclusiveRename.h"

#include <fcntl.h>

#include <cerrno>
#include <cstdio>

namespace tavlen {

namespace {

/// The errno value of a failed call, with one value for calls that are not supported.
int renameError() { return errno == EINVAL || errno == ENOSYS ? ENOTSUP : errno; }

}  // namespace

int renameExclusively(int folder, const char* from, const char* to) {
#ifdef __APPLE__
  const int result = ::renameatx_np(folder, from, folder, to, RENAME_EXCL);
#else
  const int result = ::renameat2(folder, from, folder, to, RENAME_NOREPLACE);
#endif
  return result == 0 ? 0 : renameError();
}

int exchangeEntries(const char* one, const char* other) {
#ifdef __APPLE__
  const int result = ::renamex_np(one, other, RENAME_SWAP);
#else
  const int result = ::renameat2(AT_FDCWD, one, AT_FDCWD, other, RENAME_EXCHANGE);
#endif
  return result == 0 ? 0 : renameError();
}

}  // namespace tavlen
