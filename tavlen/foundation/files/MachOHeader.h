#pragma once

#include <cstdint>
#include <optional>

namespace tavlen {

class RandomAccessFile;

/// The header of a Mach-O image. The numbers are those of <mach-o/loader.h>.
struct MachOHeader {
  /// The kinds of files that the library tells apart.
  enum class FileType : std::uint32_t { object = 1, execute = 2, dylib = 6, bundle = 8 };

  /// The CPU type, as in <mach/machine.h>.
  std::uint32_t cpuType = 0;
  /// The CPU subtype, without its feature bits.
  std::uint32_t cpuSubtype = 0;
  /// Values outside of FileType occur.
  FileType fileType{};

  bool operator==(const MachOHeader&) const = default;

  /// Reads the header of `file`. Of a fat file it reads the slice that a device prefers: arm64,
  /// arm64e, x86_64, then the first readable one. Returns nothing for a file that is not Mach-O or
  /// whose header or slices are truncated. Throws std::system_error when reading fails. Makes at
  /// most 33 small reads.
  static std::optional<MachOHeader> read(const RandomAccessFile& file);
};

}  // namespace tavlen
