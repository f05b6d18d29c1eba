#pragma once

#include <cstdint>

#include "tavlen/foundation/files/RandomAccessFile.h"

namespace tavlen {

/// The place of the central directory, from the end of a ZIP archive (APPNOTE.TXT 4.3.14 to
/// 4.3.16).
struct ZIPEndRecord {
  std::uint64_t entries = 0;          ///< number of entries in the directory
  std::uint64_t directoryOffset = 0;  ///< in bytes from the start of the file
  std::uint64_t directorySize = 0;    ///< in bytes

  /// Finds and reads the end record. Throws ZIPError (damagedArchive) unless there is exactly one,
  /// right after the directory, and at the end of the file or with only zeros after it; record,
  /// comment and zeros take at most 64 KiB. Throws std::system_error.
  static ZIPEndRecord find(const RandomAccessFile& archive);
};

}  // namespace tavlen
