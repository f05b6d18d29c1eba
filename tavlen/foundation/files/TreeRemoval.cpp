#include "tavlen/foundation/files/TreeRemoval.h"

#include <cerrno>
#include <optional>
#include <string>
#include <system_error>
#include <utility>
#include <vector>

#include "tavlen/foundation/base/SystemError.h"
#include "tavlen/foundation/files/FolderReader.h"

namespace tavlen {

namespace {

class RemovalOfContents {
 public:
  explicit RemovalOfContents(const FileDescriptor& folder) {
    enter(FileDescriptor(::fcntl(folder.get(), F_DUPFD_CLOEXEC, 0)), {});
    while (!levels_.empty()) {
      if (!levels_.back().folders.empty()) {
        const std::string name = std::move(levels_.back().folders.back());
        levels_.back().folders.pop_back();
        removeFolder(name);
      } else if (!leave()) {
        return;
      }
    }
  }

  /// The errno value of the first failure, or 0.
  int error() const { return error_; }

 private:
  /// A folder that is not empty yet. Only the innermost one is open. The way back is "..", which
  /// leads elsewhere when another process moves a folder; leave() detects that.
  struct Level {
    struct stat status;
    std::string name;
    std::vector<std::string> folders;
  };

  void note(int code) {
    if (error_ == 0) error_ = code;
  }

  void enter(FileDescriptor folder, std::string name) {
    struct stat status {};
    if (!folder || ::fstat(folder.get(), &status) != 0) return note(errno);
    // A failure shows when the contents are deleted.
    if ((status.st_mode & S_IRWXU) != S_IRWXU) {
      (void)::fchmod(folder.get(), (status.st_mode & 07777) | S_IRWXU);
    }
    current_ = std::move(folder);
    levels_.push_back({status, std::move(name), {}});
    // List first, then delete: on some volumes a deletion makes the listing skip entries.
    for (std::string& entry : names()) removeFile(std::move(entry));
  }

  /// Returns to the parent folder. False when it cannot be found again.
  bool leave() {
    const Level left = std::move(levels_.back());
    levels_.pop_back();
    if (levels_.empty()) return true;
    FileDescriptor parent = FileDescriptor::tryOpenAt(current_.get(), "..", kOpenFolder);
    struct stat status {};
    if (!parent || ::fstat(parent.get(), &status) != 0) {
      note(errno);
      return false;
    }
    if (status.st_dev != levels_.back().status.st_dev ||
        status.st_ino != levels_.back().status.st_ino) {
      note(EBUSY);
      return false;
    }
    current_ = std::move(parent);
    if (::unlinkat(current_.get(), left.name.c_str(), AT_REMOVEDIR) != 0 && errno != ENOENT) {
      note(errno);
    }
    return true;
  }

  std::vector<std::string> names() {
    std::vector<std::string> names;
    try {
      FolderReader reader(FileDescriptor::openAt(current_.get(), ".", kOpenFolder, {}), {});
      while (std::optional<std::string> name = reader.next()) names.push_back(std::move(*name));
    } catch (const std::system_error& error) {
      note(error.code().value());
    }
    return names;
  }

  /// Removes anything but a folder; a folder is queued.
  void removeFile(std::string name) {
    struct stat status {};
    if (::fstatat(current_.get(), name.c_str(), &status, AT_SYMLINK_NOFOLLOW) != 0) {
      if (errno != ENOENT) note(errno);
    } else if (S_ISDIR(status.st_mode)) {
      levels_.back().folders.push_back(std::move(name));
    } else if (::unlinkat(current_.get(), name.c_str(), 0) != 0 && errno != ENOENT) {
      note(errno);
    }
  }

  void removeFolder(const std::string& name) {
    // An empty folder need not be opened, which its permissions may forbid.
    if (::unlinkat(current_.get(), name.c_str(), AT_REMOVEDIR) == 0 || errno == ENOENT) return;
    if (errno != ENOTEMPTY && errno != EEXIST) return note(errno);
    enter(openForRemoval(current_.get(), name), name);
  }

  FileDescriptor current_;
  std::vector<Level> levels_;
  int error_ = 0;
};

}  // namespace

FileDescriptor openForRemoval(int parent, const std::filesystem::path& name) {
  struct stat status {};
  FileDescriptor folder = FileDescriptor::tryOpenAt(parent, name.c_str(), kOpenFolder);
  if (!folder && errno == EACCES) {
    // Its permissions forbid opening it, so they can be changed by name only.
    if (::fstatat(parent, name.c_str(), &status, AT_SYMLINK_NOFOLLOW) != 0) return folder;
    const mode_t mode = (status.st_mode & 07777) | S_IRWXU;
    if (!S_ISDIR(status.st_mode) ||
        ::fchmodat(parent, name.c_str(), mode, AT_SYMLINK_NOFOLLOW) != 0) {
      errno = EACCES;
      return folder;
    }
    folder = FileDescriptor::tryOpenAt(parent, name.c_str(), kOpenFolder);
  }
  return folder;
}

void removeContents(const FileDescriptor& folder, const std::filesystem::path& path) {
  const RemovalOfContents removal(folder);
  if (removal.error() != 0) throwSystemError(removal.error(), path);
}

}  // namespace tavlen
