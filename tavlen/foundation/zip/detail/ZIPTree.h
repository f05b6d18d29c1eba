#pragma once

#include <cstdint>
#include <ctime>
#include <filesystem>
#include <string>
#include <vector>

#include "tavlen/foundation/zip/ZIPArchive.h"

namespace tavlen {

/// A file or folder that becomes an entry.
struct ZIPItem {
  std::string name;  ///< a folder's with "/" at its end
  std::filesystem::path path;
  std::uint32_t mode;
  std::uint64_t size;  ///< 0 for a folder
  std::time_t modified;

  bool isFolder() const { return name.ends_with('/'); }
};

/// `item` under its own name and all in it, a folder before its contents, those by name; files with
/// temporary names are left out. Throws ZIPError for what readZIPDirectory() would refuse, and
/// std::system_error with the path.
std::vector<ZIPItem> readZIPTree(const std::filesystem::path& item,
                                 const ZIPArchive::Limits& limits);

}  // namespace tavlen
