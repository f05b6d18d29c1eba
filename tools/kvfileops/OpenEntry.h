#pragma once

#include <filesystem>
#include <optional>
#include <string>

#include "tavlen/foundation/files/FileDescriptor.h"

namespace tavlen::fileops {

/// Flags for a folder that is only gone through and need not be readable.
inline constexpr int kOpenPassage = O_PATH | O_DIRECTORY | O_NOFOLLOW;

/// Opens the folder `name` of the opened folder `parent` for reading; nothing where nothing stands
/// there, or something else, a symbolic link too. `shown` names it in errors (std::system_error).
std::optional<FileDescriptor> openFolder(int parent, const std::string& name,
                                         const std::filesystem::path& shown);

/// Opens the regular file `name` likewise; nothing where something else stands there, ENOENT where
/// nothing does. Never blocks.
std::optional<FileDescriptor> openRegularFile(int parent, const std::string& name,
                                              const std::filesystem::path& shown);

}  // namespace tavlen::fileops
