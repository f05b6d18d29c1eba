#pragma once

#include <filesystem>
#include <set>
#include <span>
#include <vector>

#include "tavlen/foundation/base/API.h"
#include "tavlen/foundation/files/FileDescriptor.h"

namespace tavlen {

/// Sleeps until something may have changed in a set of folders.
///
/// It tells when to look, not what changed: notices get lost, and some volumes send none. Entries
/// whose names begin with "." are ignored. Notices come from inotify on Linux. On other systems,
/// and when the system refuses to watch another folder, it wakes once a second.
/// Threads: any, one object one thread at a time.
class TAVLEN_API DirectoryWatcher {
 public:
  /// Why wait() returned: a possible change, or a closed descriptor.
  enum class Wake { change, end };

  /// Watches nothing yet. Does not fail: without inotify it polls.
  DirectoryWatcher();

  /// Watches these folders instead of the former ones. Subfolders are not watched; entries that are
  /// not folders are ignored.
  void watch(const std::vector<std::filesystem::path>& folders);

  /// Waits for a change in the folders since watch() or the last wait(), then a moment longer, so
  /// that a burst of changes wakes it once. Returns `end` as soon as the peer of one of the
  /// descriptors `ends` is closed. Throws std::system_error.
  Wake wait(std::span<const int> ends);

 private:
  bool takeNotices() const;

  FileDescriptor notices_;  ///< empty when the system has no notices
  std::set<int> watches_;
  bool isComplete_ = false;  ///< whether every folder is watched
};

}  // namespace tavlen
