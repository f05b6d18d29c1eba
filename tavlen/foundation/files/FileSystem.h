#pragma once

#include <fcntl.h>

#include <cstddef>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

/// Reading of foreign files, and queries about paths.
///
/// Errors are std::system_error with the path in the text. Threads: any, for all functions.
namespace tavlen {

/// The bytes of a file of at most 2 GiB (EFBIG). A symbolic link is followed. A folder (EISDIR) and
/// anything else that is not a regular file (EINVAL) are refused; opening a pipe never blocks.
std::string readFile(const std::filesystem::path& path);

/// The same for a path given as text, relative to the open folder `folder`. This saves readers of
/// thousands of files an allocation for each path component, and the look-up of a long path.
std::string readFileNamed(const std::string& path, int folder = AT_FDCWD);

/// As readFile(), but returns nothing for a file of more than `most` bytes, and never reads more
/// than that.
std::optional<std::string> readFileUpTo(const std::filesystem::path& path, std::size_t most);

/// The text of a file as UTF-8. A byte order mark selects UTF-32 or UTF-16 and is dropped; without
/// one the text is UTF-8. Malformed text is EILSEQ: no other encoding is tried.
std::string readText(const std::filesystem::path& path);

/// Whether anything exists at `path`, including a dangling link. True when the system cannot tell.
bool isTaken(const std::filesystem::path& path);

/// Whether `path` is a regular file that may be executed. Returns 0, or an errno value that says
/// why not.
int executableError(const std::filesystem::path& path);

/// Whether `name` can be a single path component that names an entry of its folder: not empty, not
/// "." or "..", without "/" and NUL. Check stored identifiers with it before they become part of a
/// path.
bool isPlainComponent(std::string_view name);

/// The file that `name`, a stored relative path, names below `folder`. Returns nothing when `name`
/// is empty or absolute, contains a NUL, or leads out of the folder by its components or a symbolic
/// link. The file need not exist.
std::optional<std::filesystem::path> pathInside(const std::filesystem::path& folder,
                                                std::string_view name);

}  // namespace tavlen
