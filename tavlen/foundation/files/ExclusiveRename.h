#pragma once

namespace tavlen {

/// Renames an entry unless `to` exists, which plain rename() would replace. Both names are relative
/// to the open folder `folder` (AT_FDCWD for paths). Returns 0 or an errno value: EEXIST when `to`
/// exists, ENOTSUP when the system or the volume has no such call. Threads: any.
int renameExclusively(int folder, const char* from, const char* to);

}  // namespace tavlen
