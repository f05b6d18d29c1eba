#pragma once

#include <filesystem>

#include "tavlen/foundation/base/API.h"

namespace tavlen {

/// The programs that the library starts, as host paths; an empty one is not started.
///
/// If the device root is "/", they are the device's own. A tree below any other root is data, and
/// its programs are never run: the host names the programs to use instead, by default none.
struct TAVLEN_API DevicePrograms {
  std::filesystem::path fileOperations;  ///< the helper that does what needs privileges
  std::filesystem::path kill;
  std::filesystem::path killall;

  /// Those for the shared device root. A path with a cycle of links is empty. Threads: any.
  static DevicePrograms shared();
  /// Names the programs for roots other than "/". Call it before their first use. Threads: any.
  static void setForOtherRoots(DevicePrograms programs);
};

}  // namespace tavlen
