#pragma once

#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "tavlen/foundation/base/API.h"
#include "tavlen/store/FileStamp.h"

namespace tavlen {

/// The active item of each app at one moment, with the file status of the apps' records. A value.
class TAVLEN_API InstalledSnapshot {
 public:
  /// The difference in one app between two snapshots.
  struct Change {
    /// The app's bundle identifier.
    std::string bundleID;
    /// The identifier of the item that was installed, or uninstalled.
    std::string id;
    /// Whether it was installed. One that takes the place of another is.
    bool isInstalled;

    bool operator==(const Change&) const = default;
  };

  /// An empty snapshot.
  InstalledSnapshot() = default;
  /// Takes a snapshot. Reads only the records that have changed since `before`.
  static InstalledSnapshot take(const InstalledSnapshot& before);

  /// The changes from `before` to this snapshot, sorted by bundle identifier. Installing an item
  /// again is a change.
  std::vector<Change> changesSince(const InstalledSnapshot& before) const;

  /// The folders to watch for changes: that of the installed tweaks, or its closest existing
  /// parent, and those of the apps in it.
  const std::vector<std::filesystem::path>& folders() const { return folders_; }

 private:
  struct Record {
    FileStamp stamp;
    std::string id;
  };

  std::map<std::string, Record> records_;  ///< by bundle identifier
  std::vector<std::filesystem::path> folders_;
};

}  // namespace tavlen
