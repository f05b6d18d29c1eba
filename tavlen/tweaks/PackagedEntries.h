#pragma once

#include <filesystem>
#include <string_view>
#include <vector>

#include "tavlen/foundation/base/API.h"

/// What a tweak's package and its archive can contain: files and folders. The helper that installs
/// packages copies no links, and a link out of the tweak would bring in foreign files.
namespace tavlen {

/// Why packages and archives cannot contain an entry of that type, which is that of a link itself;
/// empty for files and folders. A constant.
TAVLEN_API std::string_view refusalOf(std::filesystem::file_type type);

/// An entry that a package or an archive cannot contain.
struct TAVLEN_API RefusedEntry {
  std::filesystem::path path;  ///< relative to the tweak's folder
  std::string_view reason;     ///< its refusalOf()
};

/// The refused entries below `folder`, sorted. Entries with temporary names, which are not
/// packaged, are left out. The search ends early, without an error, at a folder that cannot be
/// read.
TAVLEN_API std::vector<RefusedEntry> refusedEntries(const std::filesystem::path& folder);

/// Throws std::system_error with EINVAL, whose text names `entry` and the reason.
TAVLEN_API [[noreturn]] void throwRefusal(const std::filesystem::path& entry,
                                          std::string_view reason);

}  // namespace tavlen
