#pragma once

#include <filesystem>

#include "tavlen/foundation/base/API.h"
#include "tavlen/foundation/files/FileDescriptor.h"

/// Deletion below an open folder, safe against concurrent renames: no paths and no symbolic links
/// are followed. Threads: any.
namespace tavlen {

/// Opens the folder `name` of the open folder `parent` (AT_FDCWD for a path), not through a link.
/// Adds the owner's permissions if they are missing. Returns an empty object on failure, with errno
/// set. Close-on-exec.
TAVLEN_API FileDescriptor openForRemoval(int parent, const std::filesystem::path& name);

/// Deletes the contents of an open folder; renaming the folder concurrently does no harm. Depth
/// costs neither stack nor descriptors. Continues after an error; the first one is thrown at the
/// end, as std::system_error with `path` in the text.
TAVLEN_API void removeContents(const FileDescriptor& folder, const std::filesystem::path& path);

}  // namespace tavlen
