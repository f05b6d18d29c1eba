#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

#include "tavlen/foundation/base/API.h"
#include "tavlen/foundation/files/FileDescriptor.h"

namespace tavlen {

/// The folder that is the device's "/" on this machine.
///
/// Paths on the device are constants with their documented values; resolve them here before opening
/// them. On a device the root is "/", and nothing changes. A copied or mounted device tree, and
/// every test, sets another root. A plain value.
class TAVLEN_API DeviceRoot {
 public:
  /// `root` is made absolute. `prefix` is the folder in which a rootless jailbreak keeps programs
  /// and libraries ("/var/jb"). resolve() puts it before paths in /bin, /usr and the tool's own
  /// application, unless they already begin with it.
  explicit DeviceRoot(const std::filesystem::path& root = "/", std::string_view prefix = {});

  /// The root of the process. Threads: any. Set it before the first use of anything that reads the
  /// device.
  static DeviceRoot shared();
  /// Sets the root of the process. Threads: any.
  static void setShared(DeviceRoot root);

  /// The root folder, as a host path.
  const std::filesystem::path& url() const { return root_; }
  /// Whether this machine is the device: the root is "/".
  bool isDevice() const { return root_ == "/"; }

  /// The host path of the device's absolute path `devicePath`. ".." does not leave the root. Below
  /// any root but "/", symbolic links are resolved as the device does, including the last
  /// component's, so they do not leave the root either and the result is not a link. Throws
  /// std::system_error (ELOOP) for a cycle of links.
  std::filesystem::path resolve(std::string_view devicePath) const;
  /// The device's path for the host path `path`, if it lies below the root; else `path` itself. The
  /// inverse of resolve(), except for links.
  std::filesystem::path devicePath(const std::filesystem::path& path) const;

  /// Whether the host path `path` lies below a root other than "/", where links are the device's.
  bool hasOwnLinksAt(const std::filesystem::path& path) const;

  /// Follows the device's links in the host path `path` if hasOwnLinksAt() it; else returns it
  /// unchanged. The result is no link. Throws like resolve().
  std::filesystem::path follow(const std::filesystem::path& path) const;
  /// The same, but where the last component itself is a link, the link.
  std::filesystem::path followParent(const std::filesystem::path& path) const;

  /// Opens `path`, a host path, close-on-exec. Below any root but "/" links lead where the device's
  /// lead, and one that is put on the way concurrently is an error (ELOOP, ENOTDIR) rather than a
  /// way out. Throws std::system_error.
  FileDescriptor open(const std::string& path, int flags, mode_t mode = 0) const;
  /// What stands at `path`, a host path, by the device's links; not_found where they lead nowhere.
  std::filesystem::file_status status(const std::filesystem::path& path) const;

 private:
  /// `path` relative to a root other than "/", normalised; nothing for a path outside it.
  std::optional<std::string> relativeToRoot(const std::string& path) const;

  std::filesystem::path root_;
  std::filesystem::path prefix_;  ///< empty without a rootless jailbreak
};

}  // namespace tavlen
