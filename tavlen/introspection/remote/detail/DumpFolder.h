#pragma once

#include <sys/types.h>

#include <cstddef>
#include <filesystem>
#include <string>

#include "tavlen/foundation/files/FileDescriptor.h"

namespace tavlen {

/// The folder that the dump agent creates for its archive, and the archive in it.
///
/// The agent runs in an untrusted app. To avoid TOCTOU races, its path is opened once, the
/// descriptor verified, and only that used for reading and deleting.
///
/// Errors are std::system_error with the path in the text. Threads: one object, one thread.
class DumpFolder {
 public:
  /// The identity of a file or folder, independent of its names.
  struct Identity {
    dev_t device = 0;
    ino_t number = 0;

    bool operator==(const Identity&) const = default;
  };

  /// Opens the folder that contains `archive`, a path on the device. Slashes and "/." at its end
  /// are ignored.
  explicit DumpFolder(const std::string& archive);

  /// The bytes of the archive. Refuses anything that is not a regular file (EINVAL), symbolic links
  /// (ELOOP) and files of more than `most` bytes (EFBIG).
  std::string readArchive(std::size_t most) const;

  /// Deletes the folder with its contents; if a symbolic link is in its place, only the link.
  ///
  /// Refuses (EPERM) folders that an agent has no reason to create: a relative path or one with
  /// ".."; the device's root, folders directly in it and folders outside of it; folders that
  /// contain, or lie in, those of the library or `appDir`, the app's bundle; folders that contain
  /// the user's home, the places for temporary files or the working folder; and a folder whose name
  /// now refers to something else.
  void remove(const std::filesystem::path& appDir) const;

 private:
  void openIn(const std::filesystem::path& parent, const std::filesystem::path& target);
  void check(const std::filesystem::path& appDir) const;
  void removeEntry(int flags) const;
  bool isStillThere() const;
  [[noreturn]] void refuse() const;

  std::filesystem::path path_;  ///< host path of the folder, for errors
  std::string name_;            ///< the folder's name in its parent
  std::string archive_;         ///< the archive's name in the folder
  bool isLink_ = false;
  Identity entry_;         ///< the folder, or the link in its place
  FileDescriptor parent_;  ///< empty if the path is refused in any case
  FileDescriptor folder_;
};

}  // namespace tavlen
