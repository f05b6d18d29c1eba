#pragma once

#include <filesystem>
#include <optional>
#include <string>

#include "tavlen/foundation/files/FileDescriptor.h"

namespace tavlen::fileops {

/// Flags for a folder that is only gone through and, where the system has a way, need not be
/// readable. A link is not followed.
#if defined(O_PATH)
inline constexpr int kOpenPassage = O_PATH | O_DIRECTORY | O_NOFOLLOW;
#elif defined(O_SEARCH)
inline constexpr int kOpenPassage = O_SEARCH | O_DIRECTORY | O_NOFOLLOW;
#else
inline constexpr int kOpenPassage = O_RDONLY | O_DIRECTORY | O_NOFOLLOW;
#endif

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
