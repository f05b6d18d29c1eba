#pragma once

#include <filesystem>
#include <optional>
#include <string>

#include "tavlen/foundation/files/FileDescriptor.h"

namespace tavlen::fileops {

/// The status of the entry `name` of the open folder `parent`; a link is not followed. Throws
/// std::system_error, in which `shown` names the entry.
struct stat statusOfEntry(int parent, const std::string& name, const std::filesystem::path& shown);

/// Opens the folder `name` of the open folder `parent` for reading. Returns nothing where there is
/// no entry of this name, or one of another kind, such as a symbolic link. `shown` names it in
/// errors (std::system_error).
std::optional<FileDescriptor> openFolder(int parent, const std::string& name,
                                         const std::filesystem::path& shown);

/// Opens the regular file `name` in the same way. Returns nothing for an entry of another kind;
/// throws ENOENT where there is no entry. Never blocks.
std::optional<FileDescriptor> openRegularFile(int parent, const std::string& name,
                                              const std::filesystem::path& shown);

}  // namespace tavlen::fileops
