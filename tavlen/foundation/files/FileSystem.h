#pragma once

#include <fcntl.h>

#include <cstddef>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

/// Reading files that others made, and asking what stands at a path.
///
/// Errors are std::system_error with the path in the text. Threads: all functions may be called
/// from any thread.
namespace tavlen {

/// The whole file's bytes, 2 GiB at the most (EFBIG). A symbolic link is followed; a folder
/// (EISDIR) and anything else that is no regular file (EINVAL) are refused, and a pipe never blocks
/// the open.
std::string readFile(const std::filesystem::path& path);

/// The same for a path's text, relative to the folder that is open as `folder`. A path object costs
/// an allocation a component, and a long path a look-up of each, which readers of thousands of
/// files notice. EFBIG for a file of more than `most` bytes, with that number in the text; no more
/// are read.
std::string readFileNamed(const std::string& path, int folder = AT_FDCWD,
                          std::size_t most = std::size_t{1} << 31);

/// As readFile(), but nothing for a file of more than `most` bytes; no more than those are read.
std::optional<std::string> readFileUpTo(const std::filesystem::path& path, std::size_t most);

/// The file's text as UTF-8. A byte order mark tells UTF-32 or UTF-16 and is dropped; without one
/// the text is UTF-8. Malformed text is EILSEQ: there is no fallback to another encoding.
std::string readText(const std::filesystem::path& path);

/// Whether anything stands at `path`, a link to nothing too, or it cannot be told.
bool isTaken(const std::filesystem::path& path);

/// Whether a program can be started there: a regular file that may be run. Gives 0, or why not, as
/// errno tells it.
int executableError(const std::filesystem::path& path);

/// Whether `name` can stand between two slashes and names an entry of that folder itself: not
/// empty, not "." or "..", without "/" and NUL. To be asked before a stored identifier becomes part
/// of a path.
bool isPlainComponent(std::string_view name);

/// The file that `name`, a stored relative path, names below `folder`; nothing when it is empty or
/// absolute, holds a NUL, or leads out of the folder, by its components or through a symbolic link.
/// The file need not exist.
std::optional<std::filesystem::path> pathInside(const std::filesystem::path& folder,
                                                std::string_view name);

}  // namespace tavlen
