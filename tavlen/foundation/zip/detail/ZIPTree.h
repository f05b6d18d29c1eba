#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

#include "tavlen/foundation/zip/ZIPArchive.h"

namespace tavlen {

/// A file or folder to be archived.
struct ZIPItem {
  std::string name;  ///< a folder's ends with "/"
  std::filesystem::path path;
  std::uint32_t mode;
  std::uint64_t size;  ///< 0 for a folder

  bool isFolder() const { return name.ends_with('/'); }
};

/// Lists `item`, under its own name, and its contents: a folder before its contents, these sorted
/// by name. Files with temporary names are left out. Throws ZIPError for everything that
/// readZIPDirectory() would refuse, and std::system_error with the path.
std::vector<ZIPItem> readZIPTree(const std::filesystem::path& item,
                                 const ZIPArchive::Limits& limits);

}  // namespace tavlen
