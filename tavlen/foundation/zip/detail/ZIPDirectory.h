#pragma once

#include <string_view>
#include <vector>

#include "tavlen/foundation/files/RandomAccessFile.h"
#include "tavlen/foundation/zip/ZIPArchive.h"
#include "tavlen/foundation/zip/detail/ZIPEntry.h"

namespace tavlen {

/// Reads and validates the central directory: names, types, methods, sizes, local headers, data
/// ranges. Not checked: inflated size and CRC; with `onlyTop`, the types of entries outside it.
/// Returns all entries, in the directory's order. Throws ZIPError, std::system_error.
std::vector<ZIPEntry> readZIPDirectory(const RandomAccessFile& archive,
                                       const ZIPArchive::Limits& limits,
                                       std::string_view onlyTop = {});

}  // namespace tavlen
