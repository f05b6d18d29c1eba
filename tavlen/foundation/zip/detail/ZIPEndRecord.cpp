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
constexpr std::size_t kEndSize = 22;
constexpr std::size_t kZIP64LocatorSize = 20;
constexpr std::size_t kZIP64EndSize = 56;
constexpr std::size_t kLongestComment = 0xFFFF;

[[noreturn]] void refuse(const char* what) { throw ZIPError(ZIPError::Case::damagedArchive, what); }

/// Where the end record lies in `tail`, the file's last bytes. Nothing but zeros may follow its
/// comment: programs that write to a pipe fill up the last block. A comment that holds another
/// record is there to deceive.
std::size_t positionOfEnd(std::string_view tail) {
  const std::size_t zeros = tail.find_last_not_of('\0') + 1;  // npos + 1 is 0
  std::optional<std::size_t> found;
  for (std::size_t at = tail.find(kEndSignature); at != std::string_view::npos;
       at = tail.find(kEndSignature, at + 1)) {
    if (tail.size() - at < kEndSize) break;
    const std::size_t end = at + kEndSize + littleEndian<std::uint16_t>(tail, at + 20);
    if (end > tail.size() || end < zeros) continue;
    if (found) refuse("it ends twice");
    found = at;
  }
  if (!found) refuse("its end is missing");
  return *found;
}

template <class Unsigned>
void requireSame(Unsigned narrow, std::uint64_t wide) {
  if (narrow != static_cast<Unsigned>(-1) && narrow != wide) refuse("its two ends differ");
}

}  // namespace

ZIPEndRecord ZIPEndRecord::find(const RandomAccessFile& archive) {
  const std::uint64_t tailSize =
      std::min<std::uint64_t>(archive.size(), kEndSize + kLongestComment);
  const std::string tail =
      archive.read(archive.size() - tailSize, static_cast<std::size_t>(tailSize));
  const std::size_t position = positionOfEnd(tail);
  const std::string_view end = std::string_view(tail).substr(position);

  const auto disk = littleEndian<std::uint16_t>(end, 4);
  const auto directoryDisk = littleEndian<std::uint16_t>(end, 6);
  const auto entriesHere = littleEndian<std::uint16_t>(end, 8);
  const auto entries = littleEndian<std::uint16_t>(end, 10);
  const auto size = littleEndian<std::uint32_t>(end, 12);
  const auto offset = littleEndian<std::uint32_t>(end, 16);
  ZIPEndRecord record = {entries, offset, size};
  std::uint64_t endOffset = archive.size() - tailSize + position;

  const std::string locator = endOffset < kZIP64LocatorSize
                                  ? std::string()
                                  : archive.read(endOffset - kZIP64LocatorSize, kZIP64LocatorSize);
  const bool isZIP64 =
      locator.size() == kZIP64LocatorSize && locator.starts_with(kZIP64LocatorSignature);
  if (isZIP64) {
    endOffset = littleEndian<std::uint64_t>(locator, 8);
    const std::string wide = archive.read(endOffset, kZIP64EndSize);
    if (wide.size() != kZIP64EndSize || !wide.starts_with(kZIP64EndSignature)) {
      refuse("its 64-bit end is missing");
    }
    record = {littleEndian<std::uint64_t>(wide, 32), littleEndian<std::uint64_t>(wide, 48),
              littleEndian<std::uint64_t>(wide, 40)};
    requireSame(entries, record.entries);
    requireSame(size, record.directorySize);
    requireSame(offset, record.directoryOffset);
    if (littleEndian<std::uint64_t>(wide, 24) != record.entries ||
        littleEndian<std::uint32_t>(wide, 16) != 0 || littleEndian<std::uint32_t>(wide, 20) != 0) {
      refuse("it lies on several disks");
    }
  } else if (disk != 0 || directoryDisk != 0 || entriesHere != entries) {
    refuse("it lies on several disks");
  }
  if (record.directorySize > endOffset ||
      record.directoryOffset != endOffset - record.directorySize) {
    refuse("its directory is not where the end says");
  }
  return record;
}

}  // namespace tavlen
