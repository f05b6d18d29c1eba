#pragma once

#include <filesystem>

/// The folder that the dump agent makes for its archive. The agent is in an app of somebody else's:
/// what it names is checked before anything is deleted. Threads: any.
namespace tavlen {

/// Removes the folder that holds `archive`, a path as the device names it, with all in it; a
/// symbolic link in its place is removed, not what it leads to.
///
/// Refused (EPERM) where no agent makes a folder of its own: for a relative path, one with "..",
/// the device's root and the folders directly in it; for folders that hold, or lie in, the
/// library's own or `appDir`, the app's bundle; for those that hold the user's home, the places for
/// temporary files or the working folder. Throws std::system_error with the path in the text.
void removeDumpFolder(const std::filesystem::path& archive, const std::filesystem::path& appDir);

}  // namespace tavlen
