#include "tavlen/foundation/zip/detail/ZIPDirectory.h"

#include <sys/stat.h>

#include <algorithm>
#include <string>
#include <string_view>
#include <utility>

#include "tavlen/foundation/base/FunctionRef.h"
#include "tavlen/foundation/base/LittleEndian.h"
#include "tavlen/foundation/zip/ZIPError.h"
#include "tavlen/foundation/zip/detail/ZIPBudget.h"
#include "tavlen/foundation/zip/detail/ZIPEndRecord.h"
#include "tavlen/foundation/zip/detail/ZIPEntryName.h"
#include "tavlen/foundation/zip/detail/ZIPLocalRecord.h"
#include "tavlen/foundation/zip/detail/ZIPNameSet.h"

namespace tavlen {

namespace {

constexpr std::string_view kSignature = "PK\x01\x02";
constexpr std::size_t kFixedSize = 46;
constexpr std::uint16_t kZIP64Field = 0x0001;
constexpr std::uint32_t kInZIP64Field = 0xFFFFFFFF;
/// Encrypted, patched, strongly encrypted, with a masked directory.
constexpr std::uint16_t kUnsupportedFlags = 0x0001 | 0x0020 | 0x0040 | 0x2000;

[[noreturn]] void refuse(const std::string& what) {
  throw ZIPError(ZIPError::Case::damagedArchive, what);
}

/// Reads the values of the ZIP64 extra field, which holds those that do not fit their 32-bit
/// fields, in a fixed order.
class ZIP64Values {
 public:
  explicit ZIP64Values(std::string_view extra)
      : rest_(zipExtraField(extra, kZIP64Field)), hasField_(!rest_.empty()) {}

  std::uint64_t resolve(std::uint32_t narrow) {
    if (narrow != kInZIP64Field || !hasField_) return narrow;
    if (rest_.size() < sizeof(std::uint64_t)) refuse("a 64-bit size is missing");
    const auto value = littleEndian<std::uint64_t>(rest_, 0);
    rest_.remove_prefix(sizeof value);
    return value;
  }

 private:
  std::string_view rest_;
  bool hasField_;
};

void validateKind(const ZIPEntry& entry) {
  using Case = ZIPError::Case;
  const auto refuseEntry = [&](Case which) { throw ZIPError(which, entry.name); };
  switch (entry.mode & S_IFMT) {
    case S_IFLNK:
      refuseEntry(Case::symbolicLink);
      break;
    case S_IFDIR:
      if (!entry.isFolder()) refuseEntry(Case::fileAsFolder);
      break;
    case S_IFREG:  // some writers mark folders as files
    case 0:
      break;
    default:
      refuseEntry(Case::specialFile);
  }
  if ((entry.flags & kUnsupportedFlags) != 0 ||
      (entry.method != kZIPStored && entry.method != kZIPDeflated)) {
    refuseEntry(Case::unsupportedEntry);
  }
  if (entry.isFolder() && entry.size != 0) refuseEntry(Case::fileAsFolder);
  if (entry.method == kZIPStored && entry.compressedSize != entry.size) {
    refuseEntry(Case::sizeMismatch);
  }
  // Where there is no data nothing is read, so nothing else would look at the checksum.
  const bool hasData = !entry.isFolder() && entry.compressedSize != 0;
  if (!hasData && entry.size == 0 && entry.checksum != 0) refuseEntry(Case::checksumMismatch);
}

/// Iterates over the records of a directory in memory.
class DirectoryReader {
 public:
  explicit DirectoryReader(std::string_view bytes) : rest_(bytes) {}

  bool isAtEnd() const { return rest_.empty(); }

  /// Returns the next entry; stores its undecoded name, a view of the directory, in `storedName`.
  ZIPEntry next(std::string_view& storedName) {
    if (rest_.size() < kFixedSize || !rest_.starts_with(kSignature)) {
      refuse("its directory is truncated");
    }
    const std::size_t nameSize = littleEndian<std::uint16_t>(rest_, 28);
    const std::size_t extraSize = littleEndian<std::uint16_t>(rest_, 30);
    const std::size_t commentSize = littleEndian<std::uint16_t>(rest_, 32);
    const std::size_t size = kFixedSize + nameSize + extraSize + commentSize;
    if (rest_.size() < size) refuse("its directory is truncated");
    storedName = rest_.substr(kFixedSize, nameSize);
    const std::string_view extra = rest_.substr(kFixedSize + nameSize, extraSize);

    ZIPEntry entry;
    entry.flags = littleEndian<std::uint16_t>(rest_, 8);
    entry.method = littleEndian<std::uint16_t>(rest_, 10);
    entry.checksum = littleEndian<std::uint32_t>(rest_, 16);
    ZIP64Values wide(extra);
    entry.size = wide.resolve(littleEndian<std::uint32_t>(rest_, 24));
    entry.compressedSize = wide.resolve(littleEndian<std::uint32_t>(rest_, 20));
    entry.offset = wide.resolve(littleEndian<std::uint32_t>(rest_, 42));
    // The upper half of the attributes is the mode, whatever system the entry claims to come from:
    // no other system uses these bits, and a link must not pass because of its origin byte.
    entry.mode = littleEndian<std::uint16_t>(rest_, 40);
    entry.name = decodeZIPName(storedName, entry.flags, extra);
    rest_.remove_prefix(size);
    return entry;
  }

 private:
  std::string_view rest_;
};

/// The range of an entry in the file, with its local record.
struct Extent {
  std::uint64_t begin;
  std::uint64_t end;
  std::size_t entry;
};

void validateExtents(std::vector<Extent> extents, const std::vector<ZIPEntry>& entries,
                     std::uint64_t directoryOffset) {
  std::sort(extents.begin(), extents.end(), [](const Extent& a, const Extent& b) {
    return a.begin != b.begin ? a.begin < b.begin : a.entry < b.entry;
  });
  const Extent* last = nullptr;
  for (const Extent& extent : extents) {
    if (last != nullptr && extent.begin < last->end) {
      const std::size_t later = std::max(extent.entry, last->entry);
      throw ZIPError(ZIPError::Case::overlappingEntry, entries[later].name);
    }
    if (extent.end > directoryOffset) {
      throw ZIPError(ZIPError::Case::overlappingEntry, entries[extent.entry].name);
    }
    last = &extent;
  }
}

/// Whether the entries that `extents` tell fit the limits.
void validateSizes(const std::vector<Extent>& extents, const std::vector<ZIPEntry>& entries,
                   const ZIPArchive::Limits& limits) {
  std::uint64_t compressed = 0;  // cannot overflow: the extents do not overlap within the file
  for (const Extent& extent : extents) compressed += entries[extent.entry].compressedSize;
  ZIPBudget budget(limits, compressed);
  for (const Extent& extent : extents) {
    budget.add(entries[extent.entry].name, entries[extent.entry].size);
  }
}

/// The bytes of the directory, whose size is within the limits.
std::string directoryBytes(const RandomAccessFile& archive, const ZIPEndRecord& end,
                           const ZIPArchive::Limits& limits) {
  // Check this before reading anything whose size depends on it.
  if (end.entries > limits.entries) {
    throw ZIPError(ZIPError::Case::tooManyEntries, std::to_string(limits.entries));
  }
  if (end.directorySize > limits::kArchiveDirectoryBytes) {
    const std::string most = std::to_string(limits::kArchiveDirectoryBytes);
    refuse("its directory has more than " + most + " bytes");
  }
  return archive.read(end.directoryOffset, static_cast<std::size_t>(end.directorySize));
}

/// Passes each entry of the directory to `take`, with its undecoded name.
void visitDirectory(std::string_view bytes, std::uint64_t count,
                    FunctionRef<void(ZIPEntry entry, std::string_view storedName)> take) {
  DirectoryReader reader(bytes);
  std::uint64_t read = 0;
  for (; !reader.isAtEnd(); ++read) {
    if (read == count) refuse("its directory has more entries than the end record says");
    std::string_view storedName;
    ZIPEntry entry = reader.next(storedName);
    take(std::move(entry), storedName);
  }
  if (read != count) refuse("its directory has fewer entries than the end record says");
}

}  // namespace

std::vector<ZIPEntry> readZIPDirectory(const RandomAccessFile& archive,
                                       const ZIPArchive::Limits& limits, std::string_view onlyTop) {
  const ZIPEndRecord end = ZIPEndRecord::find(archive);
  std::vector<ZIPEntry> entries;
  std::vector<Extent> extents;
  ZIPNameSet names(limits.entries);
  visitDirectory(directoryBytes(archive, end, limits), end.entries,
                 [&](ZIPEntry entry, std::string_view storedName) {
                   validateZIPName(entry.name);
                   names.add(entry.name);
                   if (entry.isWithin(onlyTop)) validateKind(entry);
                   const std::uint64_t entryEnd =
                       validateZIPLocalRecord(archive, entry, storedName);
                   extents.push_back({entry.offset, entryEnd, entries.size()});
                   entries.push_back(std::move(entry));
                 });
  validateExtents(extents, entries, end.directoryOffset);
  validateSizes(extents, entries, limits);
  return entries;
}

ZIPListing listZIPDirectory(const RandomAccessFile& archive, const ZIPArchive::Limits& limits) {
  const ZIPEndRecord end = ZIPEndRecord::find(archive);
  ZIPListing listing;
  listing.directoryOffset = end.directoryOffset;
  visitDirectory(directoryBytes(archive, end, limits), end.entries,
                 [&](ZIPEntry entry, std::string_view storedName) {
                   listing.entries.push_back(std::move(entry));
                   listing.storedNames.emplace_back(storedName);
                 });
  return listing;
}

void validateZIPEntries(const RandomAccessFile& archive, const ZIPListing& listing,
                        std::span<const std::size_t> chosen, const ZIPArchive::Limits& limits) {
  std::vector<Extent> extents;
  for (const std::size_t i : chosen) {
    const ZIPEntry& entry = listing.entries[i];
    validateZIPName(entry.name);
    validateKind(entry);
    extents.push_back(
        {entry.offset, validateZIPLocalRecord(archive, entry, listing.storedNames[i]), i});
  }
  validateExtents(extents, listing.entries, listing.directoryOffset);
  validateSizes(extents, listing.entries, limits);
}

}  // namespace tavlen
