#pragma once

#include <cstdint>

#include "tavlen/foundation/files/RandomAccessFile.h"

namespace tavlen {

/// What the end of a ZIP archive tells of its directory (APPNOTE.TXT 4.3.14 to 4.3.16).
struct ZIPEndRecord {
  std::uint64_t entries = 0;
  std::uint64_t directoryOffset = 0;
  std::uint64_t directorySize = 0;

  /// Throws ZIPError (damagedArchive) unless the archive has exactly one end, in the end of the
  /// file or with zeros after it, 64 KiB with its comment at most, and the directory lies right
  /// before it.
  static ZIPEndRecord find(const RandomAccessFile& archive);
};

}  // namespace tavlen
