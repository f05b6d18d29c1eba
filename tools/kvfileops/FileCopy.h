#pragma once

#include <cstdint>
#include <filesystem>

#include "tavlen/foundation/files/FileDescriptor.h"

namespace tavlen::fileops {

/// Copies the rest of the open file `from` to the current position of the open file `to`. Throws
/// EFBIG for more than `most` bytes. `shown` names the file in errors (std::system_error).
void copyBytes(const FileDescriptor& from, const FileDescriptor& to, std::uint64_t most,
               const std::filesystem::path& shown);

}  // namespace tavlen::fileops
