#include "tavlen/foundation/zip/ZIPArchive.h"

#include <algorithm>
#include <cerrno>
#include <system_error>
#include <vector>

#include "tavlen/foundation/base/SystemError.h"
#include "tavlen/foundation/files/FileTree.h"
#include "tavlen/foundation/files/RandomAccessFile.h"
#include "tavlen/foundation/files/TemporaryFile.h"
#include "tavlen/foundation/zip/detail/ByteProgress.h"
#include "tavlen/foundation/zip/detail/ZIPDirectory.h"
#include "tavlen/foundation/zip/detail/ZIPExtraction.h"
#include "tavlen/foundation/zip/detail/ZIPReader.h"
#include "tavlen/foundation/zip/detail/ZIPTree.h"
#include "tavlen/foundation/zip/detail/ZIPWriter.h"

namespace tavlen {

namespace {

namespace fs = std::filesystem;

std::uint64_t totalSize(const std::vector<ZIPItem>& items) {
  std::uint64_t sum = 0;
  for (const ZIPItem& item : items) sum += item.size;
  return sum;
}

/// Those of `entries` that are at `onlyTop` or below, by the order of their names: whatever order
/// the archive has them in, each folder is made and filled before the next.
std::vector<std::size_t> orderOfUnpacking(const std::vector<ZIPEntry>& entries,
                                          std::string_view onlyTop) {
  std::vector<std::size_t> order;
  for (std::size_t i = 0; i < entries.size(); ++i) {
    if (entries[i].isWithin(onlyTop)) order.push_back(i);
  }
  std::sort(order.begin(), order.end(),
            [&](std::size_t a, std::size_t b) { return entries[a].name < entries[b].name; });
  return order;
}

}  // namespace

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
  const std::vector<std::size_t> order = orderOfUnpacking(entries, onlyTop);
  std::uint64_t total = 0;
  for (const std::size_t i : order) total += entries[i].size;
  ByteProgress bytes(progress, total);

  ZIPExtraction extraction(destination);
  for (const std::size_t i : order) {
    const ZIPEntry& entry = entries[i];
    bytes.add(0);
    if (entry.isFolder()) {
      extraction.makeFolder(entry.name, entry.mode);
      continue;
    }
    extraction.makeFile(entry.name, entry.mode, [&](ZIPExtraction::Sink sink) {
      reader.read(i, [&](std::string_view piece) {
        sink(piece);
        bytes.add(piece.size());
      });
    });
  }
  extraction.keep();
  bytes.finish();
}

}  // namespace tavlen
