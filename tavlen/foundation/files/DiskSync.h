#pragma once

#include <filesystem>

#include "tavlen/foundation/base/API.h"

/// Data on the disk survives a power failure, not only a crash. Threads: any.
namespace tavlen {

/// Flushes what was written through `descriptor`, and the drive's cache, to the disk. Returns 0, or
/// -1 with errno.
TAVLEN_API int syncDescriptor(int descriptor);

/// Flushes the contents of `file` to the disk. Throws std::system_error with the path.
TAVLEN_API void syncFile(const std::filesystem::path& file);

/// Flushes the names in `folder` to the disk. Errors are ignored: not every file system supports
/// this, and every file that has a name is complete either way.
TAVLEN_API void syncFolder(const std::filesystem::path& folder);

}  // namespace tavlen
