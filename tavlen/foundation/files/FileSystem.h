#pragma once

#include <cstddef>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

#include "tavlen/foundation/base/API.h"
#include "tavlen/foundation/files/RandomAccessFile.h"

/// Reading of foreign files, and queries about paths.
///
/// Errors are std::system_error with the path in the text. Threads: any, for all functions.
namespace tavlen {

/// The bytes of a file of at most `most` bytes (EFBIG, with that number in the text). A path is
/// opened as RandomAccessFile does.
TAVLEN_API std::string readFile(const RandomAccessFile& file,
                                std::size_t most = std::size_t{1} << 31);
TAVLEN_API std::string readFile(const std::filesystem::path& path);

/// As readFile(), but returns nothing for a file of more than `most` bytes, and never reads more
/// than that.
TAVLEN_API std::optional<std::string> readFileUpTo(const RandomAccessFile& file, std::size_t most);
TAVLEN_API std::optional<std::string> readFileUpTo(const std::filesystem::path& path,
                                                   std::size_t most);

/// The text of a file by textFromBytes(). Malformed text is EILSEQ.
TAVLEN_API std::string readText(const RandomAccessFile& file);
TAVLEN_API std::string readText(const std::filesystem::path& path);

/// Whether anything exists at `path`, including a dangling link. True when the system cannot tell.
TAVLEN_API bool isTaken(const std::filesystem::path& path);

/// Whether `path` is a regular file that may be executed. Returns 0, or an errno value that says
/// why not.
TAVLEN_API int executableError(const std::filesystem::path& path);

/// Whether `name` can be a single path component that names an entry of its folder: not empty, not
/// "." or "..", without "/" and NUL. Check stored identifiers with it before they become part of a
/// path.
TAVLEN_API bool isPlainComponent(std::string_view name);

/// Whether `path` is `folder` or lies below it. Compares components only; no file is looked up.
TAVLEN_API bool isAtOrBelow(const std::filesystem::path& path, const std::filesystem::path& folder);

/// Whether `name`, a stored path, is a relative one: not empty, not absolute, without NUL.
TAVLEN_API bool isRelativeName(std::string_view name);

/// The file that `name`, a stored relative path, names below `folder`. Returns nothing unless
/// isRelativeName(), and when `name` leads out of the folder by its components or a symbolic link.
/// The file need not exist.
TAVLEN_API std::optional<std::filesystem::path> pathInside(const std::filesystem::path& folder,
                                                           std::string_view name);

}  // namespace tavlen
