#pragma once

#include "tavlen/foundation/base/API.h"

/// What rename() cannot do: keep an existing entry, exchange two.
namespace tavlen {

/// Renames an entry unless `to` exists, which plain rename() would replace. Both names are relative
/// to the open folder `folder` (AT_FDCWD for paths). Returns 0 or an errno value: EEXIST when `to`
/// exists, ENOTSUP when the system or the volume has no such call. Threads: any.
TAVLEN_API int renameExclusively(int folder, const char* from, const char* to);

/// Exchanges two entries, of which each takes the other's name, in one step: readers, and a restart
/// after a crash, see both before it or both after it. Both paths must be on one volume. Returns 0
/// or an errno value: ENOTSUP when the system or the volume has no such call. Threads: any.
TAVLEN_API int exchangeEntries(const char* one, const char* other);

}  // namespace tavlen
