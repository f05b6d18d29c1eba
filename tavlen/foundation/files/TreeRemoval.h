#pragma once

#include <filesystem>

#include "tavlen/foundation/files/FileDescriptor.h"

/// Deletion below an open folder, whatever others rename meanwhile: no path is followed, and no
/// symbolic link. Threads: any.
namespace tavlen {

/// Opens the folder `name` of the folder that is open as `parent` (AT_FDCWD for a path), no link;
/// one that is closed to its owner gets the permissions first. Holds none on failure, with errno.
/// Close-on-exec.
FileDescriptor openForRemoval(int parent, const std::filesystem::path& name);

/// Deletes all that the open folder holds, and for as long as that is open it may lie anywhere.
/// Depth costs neither stack nor descriptors. Goes on after an error; the first one is thrown at
/// the end, a std::system_error with `path`, the folder's name for the reader, in the text.
void removeContents(const FileDescriptor& folder, const std::filesystem::path& path);

}  // namespace tavlen
