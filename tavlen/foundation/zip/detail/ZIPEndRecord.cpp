#include "tavlen/foundation/zip/detail/ZIPEndRecord.h"

#include <algorithm>
#include <optional>
#include <string>
#include <string_view>

#include "tavlen/foundation/base/LittleEndian.h"
#include "tavlen/foundation/zip/ZIPError.h"

namespace tavlen {

namespace {

constexpr std::string_view kEndSignature = "PK\x05\x06";
constexpr std::string_view kZIP64LocatorSignature = "PK\x06\x07";
constexpr std::string_view kZIP64EndSignature = "PK\x06\x06";
constexpr std::size_t kZIP64LocatorSize = 20;
constexpr std::size_t kLongestComment = 0xFFFF;

[[noreturn]] void refuse(const char* what) { throw ZIPError(ZIPError::Case::damagedArchive, what); }

/// The end of central directory record (APPNOTE.TXT 4.3.16). The numbers are offsets of fields.
struct End {
  static constexpr std::size_t kSize = 22;

  explicit End(std::string_view bytes)
      : disk(littleEndian<std::uint16_t>(bytes, 4)),
        directoryDisk(littleEndian<std::uint16_t>(bytes, 6)),
        entriesOnDisk(littleEndian<std::uint16_t>(bytes, 8)),
        entries(littleEndian<std::uint16_t>(bytes, 10)),
        directorySize(littleEndian<std::uint32_t>(bytes, 12)),
        directoryOffset(littleEndian<std::uint32_t>(bytes, 16)),
        commentSize(littleEndian<std::uint16_t>(bytes, 20)) {}

  std::uint16_t disk;
  std::uint16_t directoryDisk;
  std::uint16_t entriesOnDisk;
  std::uint16_t entries;
  std::uint32_t directorySize;
  std::uint32_t directoryOffset;
  std::uint16_t commentSize;
};

/// The ZIP64 end of central directory record (APPNOTE.TXT 4.3.14), up to its extensible data.
struct ZIP64End {
  static constexpr std::size_t kSize = 56;

  explicit ZIP64End(std::string_view bytes)
      : disk(littleEndian<std::uint32_t>(bytes, 16)),
        directoryDisk(littleEndian<std::uint32_t>(bytes, 20)),
        entriesOnDisk(littleEndian<std::uint64_t>(bytes, 24)),
        entries(littleEndian<std::uint64_t>(bytes, 32)),
        directorySize(littleEndian<std::uint64_t>(bytes, 40)),
        directoryOffset(littleEndian<std::uint64_t>(bytes, 48)) {}

  std::uint32_t disk;
  std::uint32_t directoryDisk;
  std::uint64_t entriesOnDisk;
  std::uint64_t entries;
  std::uint64_t directorySize;
  std::uint64_t directoryOffset;
};

/// The position of the end record in `tail`, the last bytes of the file. Only zeros may follow the
/// record's comment: programs that write to a pipe fill up the last block. Two such records, one in
/// the comment of the other, are refused: readers would disagree on which of them counts.
std::size_t positionOfEnd(std::string_view tail) {
  const std::size_t zeros = tail.find_last_not_of('\0') + 1;  // npos + 1 is 0
  std::optional<std::size_t> found;
  for (std::size_t at = tail.find(kEndSignature); at != std::string_view::npos;
       at = tail.find(kEndSignature, at + 1)) {
    if (tail.size() - at < End::kSize) break;
    const std::size_t end = at + End::kSize + End(tail.substr(at)).commentSize;
    if (end > tail.size() || end < zeros) continue;
    if (found) refuse("it has two end records");
    found = at;
  }
  if (!found) refuse("its end record is missing");
  return *found;
}

/// The offset of the ZIP64 end record, from the locator right before the end record
/// (APPNOTE.TXT 4.3.15); nothing when there is no locator.
std::optional<std::uint64_t> offsetOfZIP64End(const RandomAccessFile& archive,
                                              std::uint64_t endOffset) {
  if (endOffset < kZIP64LocatorSize) return std::nullopt;
  const std::string locator = archive.read(endOffset - kZIP64LocatorSize, kZIP64LocatorSize);
  if (locator.size() != kZIP64LocatorSize || !locator.starts_with(kZIP64LocatorSignature)) {
    return std::nullopt;
  }
  return littleEndian<std::uint64_t>(locator, 8);
}

/// A field of the end record with all bits set means that only the ZIP64 record has the value.
template <class Unsigned>
void requireSame(Unsigned narrow, std::uint64_t wide) {
  if (narrow != static_cast<Unsigned>(-1) && narrow != wide) refuse("its two end records differ");
}

ZIP64End readZIP64End(const RandomAccessFile& archive, std::uint64_t offset, const End& end) {
  const std::string bytes = archive.read(offset, ZIP64End::kSize);
  if (bytes.size() != ZIP64End::kSize || !bytes.starts_with(kZIP64EndSignature)) {
    refuse("its ZIP64 end record is missing");
  }
  const ZIP64End wide(bytes);
  requireSame(end.entries, wide.entries);
  requireSame(end.directorySize, wide.directorySize);
  requireSame(end.directoryOffset, wide.directoryOffset);
  return wide;
}

/// An archive on a single disk has disk numbers of 0 and all entries on that disk.
template <class AnyEnd>
void requireOneDisk(const AnyEnd& end) {
  if (end.disk != 0 || end.directoryDisk != 0 || end.entriesOnDisk != end.entries) {
    refuse("it spans several disks");
  }
}

}  // namespace

ZIPEndRecord ZIPEndRecord::find(const RandomAccessFile& archive) {
  const std::uint64_t tailSize =
      std::min<std::uint64_t>(archive.size(), End::kSize + kLongestComment);
  const std::string tail =
      archive.read(archive.size() - tailSize, static_cast<std::size_t>(tailSize));
  const std::size_t position = positionOfEnd(tail);
  const End end(std::string_view(tail).substr(position));
  std::uint64_t endOffset = archive.size() - tailSize + position;

  ZIPEndRecord record = {end.entries, end.directoryOffset, end.directorySize};
  if (const auto wideOffset = offsetOfZIP64End(archive, endOffset)) {
    endOffset = *wideOffset;
    const ZIP64End wide = readZIP64End(archive, endOffset, end);
    requireOneDisk(wide);
    record = {wide.entries, wide.directoryOffset, wide.directorySize};
  } else {
    requireOneDisk(end);
  }
  if (record.directorySize > endOffset ||
      record.directoryOffset != endOffset - record.directorySize) {
    refuse("its directory is not where the end record says");
  }
  return record;
}

}  // namespace tavlen
