#pragma once

#include <filesystem>
#include <string>

/// Removal of what its caller may change meanwhile. It is not the library's, which goes back up by
/// "..": here each folder on the way stays open, which bounds the depth, and memory is bounded
/// whatever a folder holds.
namespace tavlen::fileops {

/// How many folders may be nested in what is removed: each keeps a descriptor open.
inline constexpr int kDeepestRemoval = 128;

/// Removes the entry `name` of the opened folder `parent`, a folder with all that is in it. Follows
/// no link: links themselves are removed. What is missing counts as removed. `shown` names the
/// entry in errors: std::system_error, Refusal for folders that are nested too deeply.
void removeEntry(int parent, const std::string& name, const std::filesystem::path& shown);

/// Empties the folder `name`. False where no folder stands there.
bool emptyFolder(int parent, const std::string& name, const std::filesystem::path& shown);

}  // namespace tavlen::fileops
