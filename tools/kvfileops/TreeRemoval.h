#pragma once

#include <filesystem>
#include <string>

#include "tavlen/foundation/files/FileDescriptor.h"

/// Removal of what the caller may be changing at the same time. It is not the library's, which goes
/// back up by "..": here each folder on the way stays open, which limits the depth, and memory is
/// limited whatever a folder holds. No link is followed; links themselves are removed. `shown`
/// names the entry in errors: std::system_error, Refusal for folders that are nested too deeply.
namespace tavlen::fileops {

/// How many folders may be nested in what is removed; each keeps a descriptor open.
inline constexpr int kDeepestRemoval = 128;

/// Removes the entry `name` of the open folder `parent`, a folder with everything in it. An entry
/// that is missing counts as removed.
void removeEntry(int parent, const std::string& name, const std::filesystem::path& shown);

/// Empties the folder `name` of the open folder `parent`. Returns false where it is not a folder.
bool emptyFolder(int parent, const std::string& name, const std::filesystem::path& shown);

/// Empties a folder that is open for reading, wherever others have moved it.
void emptyFolder(FileDescriptor folder, const std::filesystem::path& shown);

}  // namespace tavlen::fileops
