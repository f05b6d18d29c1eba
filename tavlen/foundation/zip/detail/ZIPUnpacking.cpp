#include "tavlen/foundation/zip/detail/ZIPUnpacking.h"

#include <algorithm>
#include <cstdint>
#include <string_view>

#include "tavlen/foundation/zip/detail/ByteProgress.h"
#include "tavlen/foundation/zip/detail/ZIPExtraction.h"
#include "tavlen/foundation/zip/detail/ZIPReader.h"

namespace tavlen {

void unpackZIPEntries(ZIPReader& reader, const std::vector<ZIPEntry>& entries,
                      std::vector<std::size_t> chosen, const std::filesystem::path& destination,
                      Progress* progress) {
  // By the order of their names: whatever order the archive has them in, each folder is made and
  // filled before the next.
  std::sort(chosen.begin(), chosen.end(),
            [&](std::size_t a, std::size_t b) { return entries[a].name < entries[b].name; });
  std::uint64_t total = 0;
  for (const std::size_t i : chosen) total += entries[i].size;
  ByteProgress bytes(progress, total);

  ZIPExtraction extraction(destination);
  for (const std::size_t i : chosen) {
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
