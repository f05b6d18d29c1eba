#pragma once

#include <filesystem>

namespace tavlen {

/// The programs that the library starts, as host paths; an empty one is not started.
///
/// Where the device root is "/", they are the device's own. A tree below any other root is data, so
/// its programs are never run: there they are what the host names, by default none.
struct DevicePrograms {
  std::filesystem::path fileOperations;  ///< the helper that does what needs privileges
  std::filesystem::path kill;
  std::filesystem::path killall;

  /// Those of the shared device root; one that links in a circle lead to is empty. Threads: any.
  static DevicePrograms shared();
  /// Names those for a root other than "/". To be called before their first use.
  static void setForOtherRoots(DevicePrograms programs);
};

}  // namespace tavlen
