#pragma once

#include <cstdint>
#include <string_view>

#include "tavlen/foundation/files/RandomAccessFile.h"
#include "tavlen/foundation/zip/detail/ZIPEntry.h"

namespace tavlen {

/// Compares an entry's local record, and the data descriptor after its data, with the directory
/// (APPNOTE.TXT 4.3.7, 4.3.9). `storedName` is the name as stored in the directory. Returns the
/// offset of the entry's end in the file. Throws ZIPError (recordMismatch, overlappingEntry).
std::uint64_t validateZIPLocalRecord(const RandomAccessFile& archive, const ZIPEntry& entry,
                                     std::string_view storedName);

}  // namespace tavlen
