#pragma once

#include <filesystem>
#include <string>
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
  std::string reason;          ///< to be shown after the path
  bool isPackaged = false;     ///< only archives refuse it, for its name
};

/// The refused entries below `folder`, sorted: those that refusalOf() refuses, those that cannot be
/// read, and those whose names no archive can contain, without the entries below them. Entries with
/// temporary names, which are not packaged, are left out.
TAVLEN_API std::vector<RefusedEntry> refusedEntries(const std::filesystem::path& folder);

/// Throws std::runtime_error, whose text names `entry` and the reason.
TAVLEN_API [[noreturn]] void throwRefusal(const std::filesystem::path& entry,
                                          std::string_view reason);

}  // namespace tavlen
