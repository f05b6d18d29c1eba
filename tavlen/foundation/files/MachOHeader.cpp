#include "tavlen/foundation/files/MachOHeader.h"

#include <algorithm>
#include <array>
#include <string_view>
#include <vector>

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
constexpr std::uint32_t kFeatureBits = 0xFF000000;

constexpr std::uint32_t kARM64 = 0x0100000C;
constexpr std::uint32_t kX86_64 = 0x01000007;
constexpr std::uint32_t kSubtypeARM64E = 2;

std::uint64_t bigEndian(std::string_view bytes) {
  std::uint64_t value = 0;
  for (const char byte : bytes) value = value << 8 | static_cast<unsigned char>(byte);
  return value;
}

/// The little-endian 32-bit word at `offset`.
std::uint32_t word(std::string_view bytes, std::size_t offset) {
  std::array<char, 4> reversed{};
  std::reverse_copy(bytes.data() + offset, bytes.data() + offset + 4, reversed.begin());
  return static_cast<std::uint32_t>(bigEndian({reversed.data(), reversed.size()}));
}

struct Slice {
  std::uint64_t offset = 0;
  std::uint64_t size = 0;
};

/// The slices of a fat file that lie within the file, after the fat header. Empty for other files.
std::vector<Slice> readSlices(const RandomAccessFile& file) {
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
  std::vector<Slice> slices;
  for (std::size_t entry = 0; entry + entrySize <= table.size(); entry += entrySize) {
    const std::string_view bytes = std::string_view(table).substr(entry + 8, 2 * width);
    const Slice slice{bigEndian(bytes.substr(0, width)), bigEndian(bytes.substr(width))};
    const bool isInFile = slice.offset <= file.size() && slice.size <= file.size() - slice.offset;
    if (isInFile && slice.offset >= kFatHeaderSize + table.size()) slices.push_back(slice);
  }
  return slices;
}

std::optional<MachOHeader> readThin(const RandomAccessFile& file, Slice slice) {
  const std::string bytes =
      file.read(slice.offset,
                static_cast<std::size_t>(std::min<std::uint64_t>(slice.size, kThinHeaderSize64)));
  if (bytes.size() < kThinHeaderSize32) return std::nullopt;
  const std::uint32_t magic = word(bytes, 0);
  const bool isWide = magic == kThin64;
  if ((!isWide && magic != kThin32) || (isWide && bytes.size() < kThinHeaderSize64)) {
    return std::nullopt;
  }
  return MachOHeader{word(bytes, 4), word(bytes, 8) & ~kFeatureBits,
                     MachOHeader::FileType{word(bytes, 12)}};
}

/// The preference of a device; lower is better.
int rank(const MachOHeader& header) {
  if (header.cpuType == kARM64) return header.cpuSubtype == kSubtypeARM64E ? 1 : 0;
  return header.cpuType == kX86_64 ? 2 : 3;
}

}  // namespace

std::optional<MachOHeader> MachOHeader::read(const RandomAccessFile& file) {
  if (const auto thin = readThin(file, {0, file.size()})) return thin;
  std::optional<MachOHeader> best;
  for (const Slice& slice : readSlices(file)) {
    const std::optional<MachOHeader> header = readThin(file, slice);
    if (header && (!best || rank(*header) < rank(*best))) best = header;
  }
  return best;
}

}  // namespace tavlen
