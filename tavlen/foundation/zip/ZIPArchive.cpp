#include "tavlen/foundation/zip/ZIPArchive.h"

#include <cerrno>
#include <system_error>
#include <vector>

#include "tavlen/foundation/base/SystemError.h"
#include "tavlen/foundation/files/FileTree.h"
#include "tavlen/foundation/files/RandomAccessFile.h"
#include "tavlen/foundation/files/TemporaryFile.h"
#include "tavlen/foundation/zip/ZIPError.h"
#include "tavlen/foundation/zip/detail/ByteProgress.h"
#include "tavlen/foundation/zip/detail/ZIPDirectory.h"
#include "tavlen/foundation/zip/detail/ZIPEntryName.h"
#include "tavlen/foundation/zip/detail/ZIPReader.h"
#include "tavlen/foundation/zip/detail/ZIPTree.h"
#include "tavlen/foundation/zip/detail/ZIPUnpacking.h"
#include "tavlen/foundation/zip/detail/ZIPWriter.h"

namespace tavlen {

namespace {

namespace fs = std::filesystem;

std::uint64_t totalSize(const std::vector<ZIPItem>& items) {
  std::uint64_t sum = 0;
  for (const ZIPItem& item : items) sum += item.size;
  return sum;
}

/// The places of those of `entries` that are at `onlyTop` or below.
std::vector<std::size_t> placesWithin(const std::vector<ZIPEntry>& entries,
                                      std::string_view onlyTop) {
  std::vector<std::size_t> places;
  for (std::size_t i = 0; i < entries.size(); ++i) {
    if (entries[i].isWithin(onlyTop)) places.push_back(i);
  }
  return places;
}

}  // namespace

bool ZIPArchive::isEntryName(std::string_view name) {
  try {
    validateZIPName(name);
    return true;
  } catch (const ZIPError&) {
    return false;
  }
}

void ZIPArchive::zipItem(const fs::path& item, const fs::path& archive, Progress* progress,
                         const Limits& limits) {
  const std::vector<ZIPItem> items = readZIPTree(item, limits);
  ByteProgress bytes(progress, totalSize(items));
  std::error_code ignored;
  if (fs::exists(fs::symlink_status(archive, ignored))) throwSystemError(EEXIST, archive);
  TemporaryFile output(AT_FDCWD, archive.parent_path(), 0666, archive);
  writeZIP(output.descriptor(), archive, items, bytes);
  // Apply a reader's checks to the result: only now is it known how well the data compressed.
  readZIPDirectory(RandomAccessFile(output.path()), limits);
  output.finish();
  moveItem(output.path(), archive);
  output.leave();
  bytes.finish();
}

void ZIPArchive::unzipItem(const fs::path& archive, const fs::path& destination, Progress* progress,
                           const Limits& limits, std::string_view onlyTop) {
  const RandomAccessFile file(archive);
  const std::vector<ZIPEntry> entries = readZIPDirectory(file, limits, onlyTop);
  ZIPReader reader(file, entries);
  unpackZIPEntries(reader, entries, placesWithin(entries, onlyTop), destination, progress);
}

}  // namespace tavlen
