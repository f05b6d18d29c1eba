#pragma once

#include <filesystem>

/// What is on the disk survives a power failure, too. Threads: any.
namespace tavlen {

/// Brings the file's contents to the disk. Throws std::system_error with the path.
void syncFile(const std::filesystem::path& file);

/// Brings the names in `folder` to the disk. Errors are ignored: not every file system can, and
/// whatever has got a name is whole either way.
void syncFolder(const std::filesystem::path& folder);

}  // namespace tavlen
