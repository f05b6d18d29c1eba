#pragma once

#include <filesystem>
#include <string>
#include <string_view>

#include "tavlen/foundation/files/FileDescriptor.h"

namespace tavlen {

/// Where the device's file system lies: the folder that stands for its "/".
///
/// Paths of the device are constants with their documented values; everybody who opens one asks
/// here first. On a device nothing changes: the root is "/". A copied or mounted device tree, and
/// every test, names another.
class DeviceRoot {
 public:
  /// `root` is made absolute. `prefix` is the device's folder under which a rootless jailbreak
  /// keeps programs and libraries ("/var/jb"): it is put before paths in /bin, /usr and the tool's
  /// own application, once: a path that begins with it already stays.
  explicit DeviceRoot(const std::filesystem::path& root = "/", std::string_view prefix = {});

  /// The root of the process. Threads: both may be called from any thread; it is to be set before
  /// the first use of anything that reads the device.
  static DeviceRoot shared();
  static void setShared(DeviceRoot root);

  const std::filesystem::path& url() const { return root_; }
  bool isDevice() const { return root_ == "/"; }

  /// Where the device's absolute path `devicePath` lies here. Its ".." do not leave the root. Below
  /// any root but "/", neither do its symbolic links, the last component's included: they are
  /// followed here, as the device does, so that the result is no link. Throws std::system_error
  /// (ELOOP) for links in a circle.
  std::filesystem::path resolve(std::string_view devicePath) const;
  /// The device's name for `path`, which resolve() gave or which lies below the root; `path` itself
  /// when it does not.
  std::filesystem::path devicePath(const std::filesystem::path& path) const;

  /// Whether `path`, a host path, lies below a root other than "/", where links are the device's.
  bool hasOwnLinksAt(const std::filesystem::path& path) const;

  /// Where `path`, a host path, leads by the device's links: as resolve() for one below any root
  /// but "/", `path` itself otherwise.
  std::filesystem::path follow(const std::filesystem::path& path) const;
  /// The same, but where the last component itself is a link, the link.
  std::filesystem::path followParent(const std::filesystem::path& path) const;

  /// Opens `path`, a host path, close-on-exec. Below any root but "/" links lead where the device's
  /// lead, and one that is put on the way concurrently is an error (ELOOP, ENOTDIR) rather than a
  /// way out. Throws std::system_error.
  FileDescriptor open(const std::filesystem::path& path, int flags, mode_t mode = 0) const;
  /// What stands at `path`, a host path, by the device's links; not_found where they lead nowhere.
  std::filesystem::file_status status(const std::filesystem::path& path) const;

 private:
  std::filesystem::path root_;
  std::filesystem::path prefix_;  ///< empty when there is none
};

}  // namespace tavlen
