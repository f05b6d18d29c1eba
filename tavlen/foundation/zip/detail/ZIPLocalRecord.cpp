#include "tavlen/foundation/zip/detail/ZIPLocalRecord.h"

#include <string>

#include "tavlen/foundation/base/LittleEndian.h"
#include "tavlen/foundation/zip/ZIPError.h"
#include "tavlen/foundation/zip/detail/ZIPEntryName.h"

namespace tavlen {

namespace {

constexpr std::string_view kSignature = "PK\x03\x04";
constexpr std::string_view kDescriptorSignature = "PK\x07\x08";
constexpr std::size_t kFixedSize = 30;
constexpr std::uint16_t kZIP64Field = 0x0001;
constexpr std::uint32_t kInZIP64Field = 0xFFFFFFFF;
constexpr std::uint16_t kDescriptorFlag = 0x0008;
/// The compression effort, which no reader needs.
constexpr std::uint16_t kEffortFlags = 0x0006;

[[noreturn]] void refuse(const ZIPEntry& entry) {
  throw ZIPError(ZIPError::Case::recordMismatch, entry.name);
}

/// The sizes in a local record. Their 64-bit forms always occur together.
struct Sizes {
  std::uint64_t compressed;
  std::uint64_t whole;
};

Sizes localSizes(std::string_view fixed, std::string_view extra) {
  const auto compressed = littleEndian<std::uint32_t>(fixed, 18);
  const auto whole = littleEndian<std::uint32_t>(fixed, 22);
  Sizes sizes = {compressed, whole};
  std::string_view wide = zipExtraField(extra, kZIP64Field);
  const auto take = [&](std::uint64_t& value) {
    if (value != kInZIP64Field || wide.size() < sizeof value) return;
    value = littleEndian<std::uint64_t>(wide, 0);
    wide.remove_prefix(sizeof value);
  };
  take(sizes.whole);
  take(sizes.compressed);
  return sizes;
}

/// The size of the data descriptor at `offset`; 0 when it does not match the directory. Writers
/// differ: it may have a signature, and its sizes take 4 or 8 bytes.
std::uint64_t descriptorSize(const RandomAccessFile& archive, const ZIPEntry& entry,
                             std::uint64_t offset) {
  constexpr std::size_t kLargest = 24;
  constexpr std::size_t kChecksumSize = 4;
  const std::string bytes = archive.read(offset, kLargest);
  for (const std::size_t start : {kDescriptorSignature.size(), std::size_t{0}}) {
    if (start != 0 && !bytes.starts_with(kDescriptorSignature)) continue;
    for (const std::size_t width : {sizeof(std::uint64_t), sizeof(std::uint32_t)}) {
      const std::size_t first = start + kChecksumSize;
      if (bytes.size() < first + 2 * width) continue;
      const auto number = [&](std::size_t at) {
        return width == sizeof(std::uint64_t) ? littleEndian<std::uint64_t>(bytes, at)
                                              : littleEndian<std::uint32_t>(bytes, at);
      };
      if (littleEndian<std::uint32_t>(bytes, start) == entry.checksum &&
          number(first) == entry.compressedSize && number(first + width) == entry.size) {
        return first + 2 * width;
      }
    }
  }
  return 0;
}

}  // namespace

std::uint64_t validateZIPLocalRecord(const RandomAccessFile& archive, const ZIPEntry& entry,
                                     std::string_view storedName) {
  const std::string fixed = archive.read(entry.offset, kFixedSize);
  if (fixed.size() != kFixedSize || !fixed.starts_with(kSignature)) refuse(entry);
  const std::size_t nameSize = littleEndian<std::uint16_t>(fixed, 26);
  const std::size_t extraSize = littleEndian<std::uint16_t>(fixed, 28);
  const auto flags = littleEndian<std::uint16_t>(fixed, 6);
  if (nameSize != storedName.size() || littleEndian<std::uint16_t>(fixed, 8) != entry.method ||
      ((flags ^ entry.flags) & ~kEffortFlags) != 0) {
    refuse(entry);
  }
  const std::string variable = archive.read(entry.offset + kFixedSize, nameSize + extraSize);
  if (variable.size() != nameSize + extraSize || !variable.starts_with(storedName)) refuse(entry);

  const std::uint64_t dataOffset = entry.offset + kFixedSize + variable.size();
  if (entry.compressedSize > archive.size() || dataOffset > archive.size() - entry.compressedSize) {
    throw ZIPError(ZIPError::Case::overlappingEntry, entry.name);
  }
  const std::uint64_t dataEnd = dataOffset + entry.compressedSize;
  const Sizes sizes = localSizes(fixed, std::string_view(variable).substr(nameSize));
  const auto checksum = littleEndian<std::uint32_t>(fixed, 14);
  if (checksum == entry.checksum && sizes.compressed == entry.compressedSize &&
      sizes.whole == entry.size) {
    return dataEnd;
  }
  // Writers that cannot seek put zeros here and the values after the data.
  const auto isOpen = [](std::uint64_t value, std::uint64_t known) {
    return value == 0 || value == kInZIP64Field || value == known;
  };
  if ((flags & kDescriptorFlag) == 0 || (checksum != 0 && checksum != entry.checksum) ||
      !isOpen(sizes.compressed, entry.compressedSize) || !isOpen(sizes.whole, entry.size)) {
    refuse(entry);
  }
  const std::uint64_t descriptor = descriptorSize(archive, entry, dataEnd);
  if (descriptor == 0) refuse(entry);
  return dataEnd + descriptor;
}

}  // namespace tavlen
