#pragma once

#include <sys/types.h>

#include <filesystem>
#include <optional>
#include <string>

#include "tavlen/foundation/files/FileDescriptor.h"

/// Folders that the program makes where others may write, too. `shown` names them in errors:
/// std::system_error, Refusal.
namespace tavlen::fileops {

/// Makes the folder `name` in the opened folder `parent` and opens it for reading; nothing where an
/// entry stands there. It is the program's own. Refuses what somebody put in its place meanwhile.
std::optional<FileDescriptor> makeNewFolder(int parent, const std::string& name, mode_t mode,
                                            const std::filesystem::path& shown);

enum class Owner { program, caller };

/// Opens the folder `name`, for calls relative to it. It is made where there is none, and then
/// belongs to `owner`.
FileDescriptor makeFolder(int parent, const std::string& name, Owner owner,
                          const std::filesystem::path& shown);

/// Gives an opened file or folder of the program to the user who called it and may have fewer
/// rights.
void giveToCaller(const FileDescriptor& made, const std::filesystem::path& shown);

}  // namespace tavlen::fileops
