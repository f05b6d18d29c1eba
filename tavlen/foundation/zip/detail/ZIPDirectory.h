#pragma once

#include <string_view>
#include <vector>

#include "tavlen/foundation/files/RandomAccessFile.h"
#include "tavlen/foundation/zip/ZIPArchive.h"
#include "tavlen/foundation/zip/detail/ZIPEntry.h"

namespace tavlen {

/// All entries of an archive in the directory's order, none of which has anything to refuse: names,
/// kinds, methods, sizes, local records and where the data lies are judged. That what is inflated
/// has the size and checksum of the records is not, nor, unless `onlyTop` is empty, what kind of
/// entry lies elsewhere than at that name and below. Throws ZIPError, std::system_error.
std::vector<ZIPEntry> readZIPDirectory(const RandomAccessFile& archive,
                                       const ZIPArchive::Limits& limits,
                                       std::string_view onlyTop = {});

}  // namespace tavlen
