#pragma once

#include <filesystem>
#include <set>
#include <span>
#include <vector>

#include "tavlen/foundation/files/FileDescriptor.h"

namespace tavlen {

/// Sleeps until something may have happened in one of some folders.
///
/// It tells when to look, not what is to be seen: notices get lost, and some volumes send none.
/// Entries whose names begin with "." wake nobody. The notices are Linux's; elsewhere, and where
/// the system lets no further folder be watched, it wakes once a second.
/// Threads: any, one object one thread at a time.
class DirectoryWatcher {
 public:
  enum class Wake { change, end };

  DirectoryWatcher();

  /// From now on, these folders and no others; not what lies deeper in them. What is no folder is
  /// left out.
  void watch(const std::vector<std::filesystem::path>& folders);

  /// Waits for a change in the folders since watch() or the last wait(); a moment longer, so that
  /// changes in a row are one. Gives `end` as soon as the other side of one of the descriptors
  /// `ends` is closed. Throws std::system_error.
  Wake wait(std::span<const int> ends);

 private:
  bool takeNotices() const;

  FileDescriptor notices_;  ///< none where the system has none
  std::set<int> watches_;
  bool isComplete_ = false;  ///< whether each folder is watched
};

}  // namespace tavlen
