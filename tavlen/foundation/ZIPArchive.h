#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>

namespace tavlen {

class Progress;

/// ZIP archives from folders, and folders from archives that anybody may have made.
///
/// Both refuse the same things by the same ZIPError: links and special files, names that leave the
/// folder or stand twice, more entries or bytes than the limits. The file system's errors are
/// std::system_error with the path. Memory does not grow with the files. A given `progress` gets
/// its units set, in bytes, and is watched: one that is cancelled ends the work with ECANCELED.
/// Threads: any.
namespace ZIPArchive {

struct Limits {
  std::uint64_t entries = 100'000;
  std::uint64_t entryBytes = std::uint64_t{4} << 30;
  std::uint64_t archiveBytes = std::uint64_t{8} << 30;
  /// Of what comes out to what lies in the archive; looked at once `ratioFreeBytes` are out.
  std::uint64_t ratio = 200;
  std::uint64_t ratioFreeBytes = std::uint64_t{64} << 20;
};

/// Writes the file or folder `item`, under its own name at the archive's top, to the new file
/// `archive`, which must not exist (EEXIST). File modes are kept. Leaves no archive on an error.
void zipItem(const std::filesystem::path& item, const std::filesystem::path& archive,
             Progress* progress = nullptr, const Limits& limits = {});

/// Unpacks `archive` into the folder `destination`, which is made and must not exist (EEXIST).
/// Checksums are checked. After an error what was unpacked is gone, folder and all.
void unzipItem(const std::filesystem::path& archive, const std::filesystem::path& destination,
               Progress* progress = nullptr, const Limits& limits = {});

}  // namespace ZIPArchive

}  // namespace tavlen
