#pragma once

#include <cstddef>
#include <span>
#include <string>
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

/// A central directory of which only the structure is checked.
struct ZIPListing {
  std::vector<ZIPEntry> entries;         ///< in the directory's order
  std::vector<std::string> storedNames;  ///< of the same entries, before they are decoded
  std::uint64_t directoryOffset = 0;     ///< in bytes from the start of the file
};

/// Reads the central directory without judging its entries. Throws ZIPError when the directory is
/// damaged, has more entries than the limit or a name that cannot be decoded; std::system_error.
ZIPListing listZIPDirectory(const RandomAccessFile& archive, const ZIPArchive::Limits& limits);

/// Validates those entries of `listing` whose places are `chosen`, each on its own and together, as
/// readZIPDirectory() does all, except that names are not compared. Throws ZIPError,
/// std::system_error.
void validateZIPEntries(const RandomAccessFile& archive, const ZIPListing& listing,
                        std::span<const std::size_t> chosen, const ZIPArchive::Limits& limits);

}  // namespace tavlen
