#pragma once

#include <filesystem>
#include <vector>

#include "tavlen/foundation/files/FileDescriptor.h"
#include "tavlen/foundation/zip/detail/ByteProgress.h"
#include "tavlen/foundation/zip/detail/ZIPTree.h"

namespace tavlen {

/// Writes an archive of `items` to `output`, an empty file open for writing; errors name it `path`.
/// Files are deflated at the fastest level, by several threads, and what does not shrink is put
/// into stored blocks. A file that has grown since is archived with the size in `items`. Throws
/// std::system_error.
void writeZIP(const FileDescriptor& output, const std::filesystem::path& path,
              const std::vector<ZIPItem>& items, ByteProgress& progress);

}  // namespace tavlen
