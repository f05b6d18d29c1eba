#pragma once

#include <cstddef>
#include <filesystem>
#include <vector>

#include "tavlen/foundation/zip/detail/ZIPEntry.h"

namespace tavlen {

class Progress;
class ZIPReader;

/// Unpacks those of `entries` whose places are `chosen`, which have been validated, into the new
/// folder `destination`, as ZIPArchive::unzipItem() documents.
void unpackZIPEntries(ZIPReader& reader, const std::vector<ZIPEntry>& entries,
                      std::vector<std::size_t> chosen, const std::filesystem::path& destination,
                      Progress* progress);

}  // namespace tavlen
