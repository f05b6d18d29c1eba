#pragma once

#include <cstdint>
#include <filesystem>
#include <string_view>

#include "tavlen/foundation/base/API.h"
#include "tavlen/foundation/base/Limits.h"

namespace tavlen {

class Progress;

/// Creates ZIP archives of folders, and unpacks archives from untrusted sources.
///
/// Both refuse the same things with the same ZIPError: links and special files, names that leave
/// the folder or are not unique, and more entries or bytes than the limits. So every archive that
/// is written can be read. Errors of the file system are std::system_error with the path. Files are
/// copied through buffers of limited size, less than 32 MB together; memory grows only with the
/// number of entries. Both block. A given `progress` gets its units, in bytes; cancelling it ends
/// the work with ECANCELED. Threads: any.
namespace ZIPArchive {

/// Limits against archives that exhaust the device.
struct TAVLEN_API Limits {
  /// Maximum number of files and folders, including parent folders implied by a path.
  std::uint64_t entries = limits::kArchiveEntries;
  /// Maximum size of a file, in bytes.
  std::uint64_t entryBytes = limits::kArchiveEntryBytes;
  /// Maximum size of all files together, in bytes.
  std::uint64_t archiveBytes = limits::kArchiveBytes;
  /// Maximum expansion ratio (inflated / compressed); enforced after `ratioFreeBytes` of output.
  std::uint64_t ratio = limits::kArchiveRatio;
  /// The bytes of output that the ratio does not limit.
  std::uint64_t ratioFreeBytes = limits::kArchiveRatioFreeBytes;
};

/// Whether an archive can contain an entry of that name, a path below its top. A folder's name may
/// end with "/".
TAVLEN_API bool isEntryName(std::string_view name);

/// Writes the file or folder `item`, under its own name at the top of the archive, to the new file
/// `archive`, which must not exist (EEXIST). Folders get their own entries, permissions are kept,
/// names are UTF-8. Times are left out and entries are sorted, so the same names, bytes and
/// permissions make the same archive. Files with temporary names (isTemporaryName()) are left out.
/// A file that is replaced in the course of this is archived as it was or as it is, never as a
/// mixture. Deflates on up to three threads of its own, which have ended when it returns or throws.
/// The archive is flushed to the disk before it gets its name. After an error there is no archive.
TAVLEN_API void zipItem(const std::filesystem::path& item, const std::filesystem::path& archive,
                        Progress* progress = nullptr, const Limits& limits = {});

/// Unpacks `archive` into the new folder `destination`, which must not exist (EEXIST) and is
/// private to its user. All names and records of the archive are checked before anything is
/// created. With `onlyTop`, only the entry of that name at the top and its contents are unpacked;
/// other entries are skipped, even links and unreadable ones, but their names and records are still
/// checked. CRCs are verified. Permissions are restored as far as the umask allows, never write
/// permission for group or others, plus u+rw and, for folders, u+x. Time is linear in the bytes of
/// the names and files. No fsync: after a crash, extract again. After an error, `destination` is
/// removed.
TAVLEN_API void unzipItem(const std::filesystem::path& archive,
                          const std::filesystem::path& destination, Progress* progress = nullptr,
                          const Limits& limits = {}, std::string_view onlyTop = {});

}  // namespace ZIPArchive

}  // namespace tavlen
