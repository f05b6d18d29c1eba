#pragma once

#include <cstdint>
#include <optional>

namespace tavlen {

class RandomAccessFile;

/// What the header of a Mach-O image says: <mach-o/loader.h> has the numbers.
struct MachOHeader {
  enum class FileType : std::uint32_t { object = 1, execute = 2, dylib = 6, bundle = 8 };

  /// Without the bits for features.
  std::uint32_t cpuType = 0;
  std::uint32_t cpuSubtype = 0;
  /// Others than those of FileType occur.
  FileType fileType{};

  bool operator==(const MachOHeader&) const = default;

  /// Reads the header of `file`, of a fat file's slice that a device prefers: arm64, arm64e,
  /// x86_64, then the first that can be read. Nothing for what is no Mach-O file, or one whose
  /// header or slices are cut short. Throws std::system_error where reading fails. At most 33 small
  /// reads.
  static std::optional<MachOHeader> read(const RandomAccessFile& file);
};

}  // namespace tavlen
