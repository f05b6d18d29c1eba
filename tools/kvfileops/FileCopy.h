#pragma once

#include <cstdint>
#include <filesystem>

#include "tavlen/foundation/files/FileDescriptor.h"

namespace tavlen::fileops {

/// Copies what is left to read of `from` to the end of `to`, both opened files. More than `most`
/// bytes are EFBIG. `shown` names the file in errors (std::system_error).
void copyBytes(const FileDescriptor& from, const FileDescriptor& to, std::uint64_t most,
               const std::filesystem::path& shown);

}  // namespace tavlen::fileops
