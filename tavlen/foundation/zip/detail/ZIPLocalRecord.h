#pragma once

#include <cstdint>
#include <string_view>

#include "tavlen/foundation/files/RandomAccessFile.h"
#include "tavlen/foundation/zip/detail/ZIPEntry.h"

namespace tavlen {

/// Compares the record before an entry's data, and a data descriptor behind it, with what the
/// directory says of the entry (APPNOTE.TXT 4.3.7, 4.3.9). `storedName` is the name as the
/// directory stores it. Gives where the entry ends in the file. Throws ZIPError (recordMismatch).
std::uint64_t judgeZIPLocalRecord(const RandomAccessFile& archive, const ZIPEntry& entry,
                                  std::string_view storedName);

}  // namespace tavlen
