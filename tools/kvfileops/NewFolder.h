#pragma once

#include <sys/types.h>

#include <filesystem>
#include <optional>
#include <string>

#include "tavlen/foundation/files/FileDescriptor.h"

/// Folders that the program makes in places where others may write, too. `shown` names them in
/// errors: std::system_error, Refusal. What fails leaves no folder.
namespace tavlen::fileops {

/// Makes the folder `name` in the open folder `parent` and opens it for reading. It belongs to the
/// program. Returns nothing where an entry has this name already. Refuses a folder that another
/// process put in its place before it was opened.
std::optional<FileDescriptor> makeNewFolder(int parent, const std::string& name, mode_t mode,
                                            const std::filesystem::path& shown);

/// Whom a new folder belongs to: the user whose rights the program has, or the one who called it.
enum class Owner { program, caller };

/// Opens the folder `name` of the open folder `parent`, for calls relative to it. Where it is
/// missing it is made, with the permissions 0755, and belongs to `owner`.
FileDescriptor makeFolder(int parent, const std::string& name, Owner owner,
                          const std::filesystem::path& shown);

/// Gives a file or folder that the program has made to the user who called it.
void giveToCaller(const FileDescriptor& made, const std::filesystem::path& shown);

}  // namespace tavlen::fileops
