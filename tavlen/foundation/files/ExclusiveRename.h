#pragma once

namespace tavlen {

/// Renames an entry, both names as seen from the open folder `folder` (AT_FDCWD for paths), unless
/// something stands at `to`, which plain rename() would replace. Gives 0, or why not, as errno
/// tells it: ENOTSUP where the system or the volume knows no such call. Threads: any.
int renameExclusively(int folder, const char* from, const char* to);

}  // namespace tavlen
