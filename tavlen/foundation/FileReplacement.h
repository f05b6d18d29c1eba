#pragma once

#include <filesystem>
#include <string_view>

namespace tavlen {

/// Makes `contents` the contents of `file`, whole or not at all.
///
/// The bytes go to a temporary file beside it, are brought to the disk, and take the name in one
/// step, so a reader and a crash find the old file or the new one. A symbolic link is followed; an
/// existing file's permissions stay. The temporary name begins with ".". Throws std::system_error
/// with the path; nothing is left behind then.
void replaceFile(const std::filesystem::path& file, std::string_view contents);

}  // namespace tavlen
