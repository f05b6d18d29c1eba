#pragma once

#include <filesystem>
#include <optional>
#include <string_view>

#include "tavlen/device/DeviceRoot.h"
#include "tavlen/foundation/files/FileDescriptor.h"

namespace tavlen::fileops {

/// The root that TAVLEN_ROOT names, "/" where it is not set or the program has more rights than its
/// caller. Throws Refusal where it is no folder's absolute path.
DeviceRoot rootFromEnvironment();

/// A folder of the device that a job is bounded to.
///
/// Where it lies is settled once, behind all links; afterwards it and everything in it is reached
/// component by component from the root's descriptor, and no link is followed. So a link that
/// somebody puts there meanwhile leads to an error, not out of the folder.
/// Errors: Refusal, std::system_error.
class DeviceFolder {
 public:
  /// Refuses a folder that lies outside the root.
  DeviceFolder(const DeviceRoot& root, std::string_view devicePath);

  const std::filesystem::path& path() const { return path_; }

  /// The folder, for calls relative to it; nothing where it does not exist.
  std::optional<FileDescriptor> open() const;
  /// The same; it is made where it is missing, and then belongs to the caller, but not what leads
  /// to it.
  FileDescriptor make() const;

  /// How the entry `path` is called from here: one component or more. It need not exist, and is not
  /// followed if it is a link. Refuses one that does not lie below the folder.
  std::filesystem::path relativePath(const std::filesystem::path& path) const;

 private:
  std::filesystem::path root_;
  std::filesystem::path path_;
};

/// The folder at `relative` below the opened folder `from`, for calls relative to it. Follows no
/// link.
FileDescriptor descend(FileDescriptor from, const std::filesystem::path& relative,
                       const std::filesystem::path& shown);

}  // namespace tavlen::fileops
