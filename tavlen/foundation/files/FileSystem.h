#pragma once

#include <cstddef>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

#include "tavlen/foundation/files/RandomAccessFile.h"

/// Reading files that others made, and asking what stands at a path.
///
/// Errors are std::system_error with the path in the text. Threads: all functions may be called
/// from any thread.
namespace tavlen {

/// The whole file's bytes, 2 GiB at the most (EFBIG). A path is opened as RandomAccessFile does.
std::string readFile(const RandomAccessFile& file);
std::string readFile(const std::filesystem::path& path);

/// As readFile(), but nothing for a file of more than `most` bytes; no more than those are read.
std::optional<std::string> readFileUpTo(const RandomAccessFile& file, std::size_t most);
std::optional<std::string> readFileUpTo(const std::filesystem::path& path, std::size_t most);

/// The file's text as UTF-8. A byte order mark tells UTF-32 or UTF-16 and is dropped; without one
/// the text is UTF-8. Malformed text is EILSEQ: there is no fallback to another encoding.
std::string readText(const RandomAccessFile& file);
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

/// Whether `path` is `folder` or lies below it, by their components: no file is asked.
bool isAtOrBelow(const std::filesystem::path& path, const std::filesystem::path& folder);

/// Whether `name`, a stored path, can name something below a folder: not empty, not absolute,
/// without NUL.
bool isRelativeName(std::string_view name);

/// The file that `name`, a stored relative path, names below `folder`; nothing when it is empty or
/// absolute, holds a NUL, or leads out of the folder, by its components or through a symbolic link.
/// The file need not exist.
std::optional<std::filesystem::path> pathInside(const std::filesystem::path& folder,
                                                std::string_view name);

}  // namespace tavlen
