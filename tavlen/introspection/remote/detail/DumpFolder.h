#pragma once

#include <sys/types.h>

#include <cstddef>
#include <filesystem>
#include <string>

#include "tavlen/foundation/files/FileDescriptor.h"

namespace tavlen {

/// The folder that the dump agent makes for its archive, and the archive in it. The agent is in an
/// app of somebody else's, and goes on running: what it names is opened once, what is open is
/// checked, and nothing but that is read and deleted, whatever is renamed meanwhile.
///
/// Errors are std::system_error with the path in the text. Threads: one object, one thread.
class DumpFolder {
 public:
  /// A file or folder itself, whatever its names.
  struct Identity {
    dev_t device = 0;
    ino_t number = 0;

    bool operator==(const Identity&) const = default;
  };

  /// Opens the folder that holds `archive`, a path as the device names it; slashes and "/." at its
  /// end count for nothing.
  explicit DumpFolder(const std::string& archive);

  /// The archive's bytes. What is no regular file (EINVAL), a symbolic link (ELOOP) and what has
  /// more than `most` bytes (EFBIG) is refused.
  std::string readArchive(std::size_t most) const;

  /// Deletes the folder with all in it; of a symbolic link in its place only that.
  ///
  /// Refused (EPERM) where no agent makes a folder of its own: for a relative path, one with "..",
  /// the device's root, the folders directly in it and those outside; for folders that hold, or lie
  /// in, the library's own or `appDir`, the app's bundle; for those that hold the user's home, the
  /// places for temporary files or the working folder; and where another has got the name.
  void remove(const std::filesystem::path& appDir) const;

 private:
  void openIn(const std::filesystem::path& parent, const std::filesystem::path& target);
  void check(const std::filesystem::path& appDir) const;
  void removeEntry(int flags) const;
  bool isStillThere() const;
  [[noreturn]] void refuse() const;

  std::filesystem::path path_;  ///< as this machine names the folder, for errors
  std::string name_;            ///< the folder's, in its parent
  std::string archive_;         ///< in the folder
  bool isLink_ = false;
  Identity entry_;         ///< of the folder, or of the link in its place
  FileDescriptor parent_;  ///< none where the path is refused whatever lies there
  FileDescriptor folder_;
};

}  // namespace tavlen
