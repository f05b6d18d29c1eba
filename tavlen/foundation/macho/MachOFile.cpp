#include "tavlen/foundation/macho/MachOFile.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <utility>

#include "tavlen/foundation/base/LittleEndian.h"
#include "tavlen/foundation/files/RandomAccessFile.h"

namespace tavlen {

namespace {

constexpr std::uint32_t kThin64 = 0xFEEDFACF;
constexpr std::uint32_t kThin32 = 0xFEEDFACE;
constexpr std::uint32_t kFat32 = 0xCAFEBABE;
constexpr std::uint32_t kFat64 = 0xCAFEBABF;
constexpr std::size_t kThinHeaderSize64 = 32;
constexpr std::size_t kThinHeaderSize32 = 28;
constexpr std::size_t kFatHeaderSize = 8;
/// A file with more is no image: a Java class file has the same magic, with its version in the
/// place of the count.
constexpr std::uint32_t kMostSlices = 32;

constexpr std::uint32_t kWide = 0x01000000;
constexpr std::uint32_t kX86 = 7;
constexpr std::uint32_t kARM = 12;
constexpr std::uint32_t kX86_64 = kX86 | kWide;
constexpr std::uint32_t kARM64 = kARM | kWide;
constexpr std::uint32_t kARM64_32 = kARM | 0x02000000;
constexpr std::uint32_t kSubtypeARM64V8 = 1;
constexpr std::uint32_t kSubtypeARM64E = 2;

struct NamedArchitecture {
  std::uint32_t cpuType;
  std::uint32_t cpuSubtype;
  std::string_view name;
};

constexpr std::array kArchitectures = {
    NamedArchitecture{kARM64, 0, "arm64"},
    NamedArchitecture{kARM64, kSubtypeARM64V8, "arm64"},
    NamedArchitecture{kARM64, kSubtypeARM64E, "arm64e"},
    NamedArchitecture{kARM64_32, 0, "arm64_32"},
    NamedArchitecture{kARM64_32, 1, "arm64_32"},
    NamedArchitecture{kX86_64, 3, "x86_64"},
    NamedArchitecture{kX86_64, 8, "x86_64h"},
    NamedArchitecture{kX86, 3, "i386"},
    NamedArchitecture{kARM, 6, "armv6"},
    NamedArchitecture{kARM, 9, "armv7"},
    NamedArchitecture{kARM, 11, "armv7s"},
    NamedArchitecture{kARM, 12, "armv7k"},
};

std::uint64_t bigEndian(std::string_view bytes) {
  std::uint64_t value = 0;
  for (const char byte : bytes) value = value << 8 | static_cast<unsigned char>(byte);
  return value;
}

struct Range {
  std::uint64_t offset = 0;
  std::uint64_t size = 0;
};

/// The slices that the header of a fat file lists, without those that leave the file or cover the
/// header. Empty for other files.
std::vector<Range> readFatHeader(const RandomAccessFile& file) {
  const std::string header = file.read(0, kFatHeaderSize);
  if (header.size() < kFatHeaderSize) return {};
  const std::uint64_t magic = bigEndian(std::string_view(header).substr(0, 4));
  const std::uint64_t count = bigEndian(std::string_view(header).substr(4, 4));
  if ((magic != kFat32 && magic != kFat64) || count > kMostSlices) return {};
  // An entry: CPU type and subtype, then offset and size of 4 or 8 bytes each, then the alignment.
  const bool isWide = magic == kFat64;
  const std::size_t width = isWide ? 8 : 4;
  const std::size_t entrySize = isWide ? 32 : 20;
  const std::string table = file.read(kFatHeaderSize, count * entrySize);
  std::vector<Range> ranges;
  for (std::size_t entry = 0; entry + entrySize <= table.size(); entry += entrySize) {
    const std::string_view bytes = std::string_view(table).substr(entry + 8, 2 * width);
    const Range range{bigEndian(bytes.substr(0, width)), bigEndian(bytes.substr(width))};
    const bool isInFile = range.offset <= file.size() && range.size <= file.size() - range.offset;
    if (isInFile && range.offset >= kFatHeaderSize + table.size()) ranges.push_back(range);
  }
  return ranges;
}

std::optional<MachOSlice> readThin(const RandomAccessFile& file, Range range) {
  constexpr unsigned kFeatureShift = 24;
  constexpr std::uint32_t kSubtypeBits = (std::uint32_t{1} << kFeatureShift) - 1;
  const std::string bytes =
      file.read(range.offset,
                static_cast<std::size_t>(std::min<std::uint64_t>(range.size, kThinHeaderSize64)));
  if (bytes.size() < kThinHeaderSize32) return std::nullopt;
  const auto word = [&](std::size_t offset) { return littleEndian<std::uint32_t>(bytes, offset); };
  const bool isWide = word(0) == kThin64;
  if ((!isWide && word(0) != kThin32) || (isWide && bytes.size() < kThinHeaderSize64)) {
    return std::nullopt;
  }
  MachOSlice slice;
  slice.offset = range.offset;
  slice.size = range.size;
  slice.is64Bit = isWide;
  slice.cpuType = word(4);
  slice.cpuSubtype = word(8) & kSubtypeBits;
  slice.features = static_cast<std::uint8_t>(word(8) >> kFeatureShift);
  slice.fileType = MachOSlice::FileType{word(12)};
  return slice;
}

/// The preference of this device, or of devices in general; lower is better.
int rank(const MachOSlice& slice) {
#ifdef __arm64e__
  constexpr int kARM64ERank = -1;
#else
  constexpr int kARM64ERank = 1;
#endif
  if (slice.cpuType == kARM64) return slice.cpuSubtype == kSubtypeARM64E ? kARM64ERank : 0;
  return slice.cpuType == kX86_64 ? 2 : 3;
}

}  // namespace

std::string MachOSlice::architecture() const {
  for (const NamedArchitecture& known : kArchitectures) {
    if (known.cpuType == cpuType && known.cpuSubtype == cpuSubtype) return std::string(known.name);
  }
  return "cpu-" + std::to_string(cpuType) + "-" + std::to_string(cpuSubtype);
}

std::optional<MachOFile> MachOFile::read(const RandomAccessFile& file) {
  if (const auto thin = readThin(file, {0, file.size()})) return MachOFile({*thin});
  std::vector<MachOSlice> slices;
  for (const Range& range : readFatHeader(file)) {
    if (const auto slice = readThin(file, range)) slices.push_back(*slice);
  }
  if (slices.empty()) return std::nullopt;
  return MachOFile(std::move(slices));
}

MachOFile::MachOFile(std::vector<MachOSlice> slices) : slices_(std::move(slices)) {}

const MachOSlice& MachOFile::preferred() const {
  return *std::min_element(
      slices_.begin(), slices_.end(),
      [](const MachOSlice& left, const MachOSlice& right) { return rank(left) < rank(right); });
}

const MachOSlice* MachOFile::sliceNamed(std::string_view architecture) const {
  const auto found = std::find_if(slices_.begin(), slices_.end(), [&](const MachOSlice& slice) {
    return slice.architecture() == architecture;
  });
  return found == slices_.end() ? nullptr : &*found;
}

}  // namespace tavlen
