#pragma once

#include <filesystem>

/// Data on the disk survives a power failure, not only a crash. Threads: any.
namespace tavlen {

/// Flushes what was written through `descriptor`, and the drive's cache, to the disk. Returns 0, or
/// -1 with errno.
int syncDescriptor(int descriptor);

/// Flushes the contents of `file` to the disk. Throws std::system_error with the path.
void syncFile(const std::filesystem::path& file);

/// Flushes the names in `folder` to the disk. Errors are ignored: not every file system supports
/// this, and every file that has a name is complete either way.
void syncFolder(const std::filesystem::path& folder);

}  // namespace tavlen
