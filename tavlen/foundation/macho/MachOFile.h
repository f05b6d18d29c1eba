#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "tavlen/foundation/base/API.h"

namespace tavlen {

class RandomAccessFile;

/// One image of a Mach-O file: all of a thin file, or a part of a fat one. The numbers are those of
/// <mach-o/loader.h> and <mach/machine.h>.
struct TAVLEN_API MachOSlice {
  /// The kinds of files that the library tells apart.
  enum class FileType : std::uint32_t {
    object = 1,
    execute = 2,
    dylib = 6,
    bundle = 8,
    dylibStub = 9,
    debugCompanion = 10,
    kernelExtension = 11
  };

  std::uint64_t offset = 0;  ///< in bytes, from the start of the file
  std::uint64_t size = 0;    ///< in bytes
  bool is64Bit = false;      ///< whether pointers have 64 bits
  /// The CPU type.
  std::uint32_t cpuType = 0;
  /// The CPU subtype, without its feature bits.
  std::uint32_t cpuSubtype = 0;
  /// The top byte of the CPU subtype: for arm64e, the version of its calling conventions.
  std::uint8_t features = 0;
  /// Values outside of FileType occur.
  FileType fileType{};

  bool operator==(const MachOSlice&) const = default;

  /// The name that tools give the architecture, such as "arm64", "arm64e" or "x86_64"; "cpu-7-3" of
  /// type and subtype for one without a name.
  std::string architecture() const;
};

/// The images in a Mach-O file.
class TAVLEN_API MachOFile {
 public:
  /// Reads the headers of `file`. Returns nothing for a file that is not Mach-O, or none of whose
  /// slices can be read; slices that cannot are left out. Throws std::system_error when reading
  /// fails. Makes at most 35 small reads.
  static std::optional<MachOFile> read(const RandomAccessFile& file);

  /// The slices in the order of the file; never empty.
  const std::vector<MachOSlice>& slices() const { return slices_; }
  /// The slice that this device loads. Elsewhere: arm64, arm64e, x86_64, then the first one.
  const MachOSlice& preferred() const;
  /// The slice of that architecture; null without one.
  const MachOSlice* sliceNamed(std::string_view architecture) const;

 private:
  explicit MachOFile(std::vector<MachOSlice> slices);

  std::vector<MachOSlice> slices_;
};

}  // namespace tavlen
