#pragma once

#include <filesystem>
#include <string_view>

#include "kvfileops/TrustedFolder.h"
#include "tavlen/device/DeviceRoot.h"
#include "tavlen/foundation/files/FileDescriptor.h"

namespace tavlen::fileops {

/// The root that TAVLEN_ROOT names, "/" where it is not set or the program has lent rights. Throws
/// Refusal where it is not the absolute path of a folder.
DeviceRoot rootFromEnvironment();

/// A folder of the device to which a job is confined.
///
/// It is reached once, as TrustedFolder does, and everything in it is reached from its descriptor
/// without following a link. A link that appears later therefore causes an error.
/// Errors: Refusal, std::system_error.
class DeviceFolder {
 public:
  /// Refuses a folder that lies outside the root.
  DeviceFolder(const DeviceRoot& root, std::string_view devicePath);

  /// Without links and dots.
  std::filesystem::path path() const { return folder_.path(); }
  bool exists() const { return folder_.exists(); }
  /// For calls relative to the folder, which exists.
  const FileDescriptor& descriptor() const { return folder_.descriptor(); }
  /// Makes the folder where it is missing. It then belongs to the caller, but the folders that lead
  /// to it do not.
  void make() { folder_.make(Owner::caller); }

  /// The path from here to the entry `path`: one component or more. The entry need not exist, and
  /// is not followed if it is a link. The caller's rights have to suffice for the way. Refuses an
  /// entry that does not lie below the folder.
  std::filesystem::path relativePath(const std::filesystem::path& path) const;

 private:
  TrustedFolder folder_;
};

/// `path` without slashes at its end, which would have a link followed.
std::filesystem::path withoutSlashAtEnd(const std::filesystem::path& path);

/// Opens the folder at `relative` below the open folder `from`, for calls relative to it; follows
/// no link. `shown` names it in errors (std::system_error).
FileDescriptor descend(const FileDescriptor& from, const std::filesystem::path& relative,
                       const std::filesystem::path& shown);

}  // namespace tavlen::fileops
