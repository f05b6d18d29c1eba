#pragma once

#include <cstdint>
#include <filesystem>
#include <string_view>

#include "tavlen/foundation/base/Limits.h"

namespace tavlen {

class Progress;

/// ZIP archives from folders, and folders from archives that anybody may have made.
///
/// Both refuse the same things by the same ZIPError: links and special files, names that leave the
/// folder or stand twice, more entries or bytes than the limits. What is written can be read. The
/// file system's errors are std::system_error with the path. A buffer of fixed size holds the
/// files' bytes; memory grows with the number of entries only. A given `progress` gets its units
/// set, in bytes, and is watched: one that is cancelled ends the work with ECANCELED.
/// Threads: any.
namespace ZIPArchive {

struct Limits {
  /// Files and folders, those included that are only part of the names of others.
  std::uint64_t entries = limits::kArchiveEntries;
  std::uint64_t entryBytes = limits::kArchiveEntryBytes;
  std::uint64_t archiveBytes = limits::kArchiveBytes;
  /// Of unpacked bytes to all compressed bytes in the archive; looked at beyond `ratioFreeBytes`
  /// unpacked ones.
  std::uint64_t ratio = limits::kArchiveRatio;
  std::uint64_t ratioFreeBytes = limits::kArchiveRatioFreeBytes;
};

/// Writes the file or folder `item`, under its own name at the archive's top, to the new file
/// `archive`, which must not exist (EEXIST). Folders have entries of their own, permissions are
/// kept, names are UTF-8; files with temporary names (isTemporaryName()) stay behind. The archive
/// is on the disk before it gets its name. Leaves no archive on an error.
void zipItem(const std::filesystem::path& item, const std::filesystem::path& archive,
             Progress* progress = nullptr, const Limits& limits = {});

/// Unpacks `archive` into the folder `destination`, which is made, private to its user, and must
/// not exist (EEXIST). The archive is opened once and judged whole before anything is made:
/// every name, every record. With `onlyTop`, the entry of that name at the top and what is in it
/// are unpacked and the rest is left, links and what cannot be read among it; names and records are
/// judged everywhere. Checksums are checked. Permissions are restored as far as the process's mask
/// lets them, write permission to the owner only, who may read and write everything. Time is linear
/// in the bytes of the names and of the files. Nothing is synced: the archive is still there. After
/// an error what was unpacked is gone, folder and all.
void unzipItem(const std::filesystem::path& archive, const std::filesystem::path& destination,
               Progress* progress = nullptr, const Limits& limits = {},
               std::string_view onlyTop = {});

}  // namespace ZIPArchive

}  // namespace tavlen
