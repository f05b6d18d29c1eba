#pragma once

#include <cstddef>
#include <filesystem>
#include <string>

namespace tavlen::fileops {

/// The first bytes of an opened regular file, `most` at the most; where it is read from later does
/// not change. Throws std::system_error, for which `shown` names the file.
std::string headOfFile(int file, std::size_t most, const std::filesystem::path& shown);

}  // namespace tavlen::fileops
