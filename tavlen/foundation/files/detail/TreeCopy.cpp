#include "tavlen/foundation/files/detail/TreeCopy.h"

#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <system_error>
#include <vector>

#include "tavlen/foundation/base/SystemError.h"
#include "tavlen/foundation/files/FileDescriptor.h"
#include "tavlen/foundation/files/FileSystem.h"
#include "tavlen/foundation/files/FileTree.h"

namespace tavlen {

namespace {

namespace fs = std::filesystem;

using LeftOut = std::function<bool(const fs::path& name)>;

void check(const std::error_code& error, const fs::path& path) {
  if (error) throw std::system_error(error, path.string());
}

/// One copy of a tree. Folders are queued, so that depth costs no stack.
class TreeCopy {
 public:
  TreeCopy(const LeftOut& isLeftOut, Durability durability)
      : isLeftOut_(isLeftOut), durability_(durability) {}

  /// Whether anything was created at the destination.
  bool hasBegun() const { return hasBegun_; }

  void copy(const fs::path& source, const fs::path& destination) {
    copyEntry(source, destination);
    std::size_t next = 0;
    while (next < folders_.size()) {
      // A copy, because copyContents() appends to the list.
      const Folder folder = folders_[next++];
      copyContents(folder);
    }
    // Permissions last and bottom-up, because a folder may be read-only.
    std::for_each(folders_.rbegin(), folders_.rend(), [this](const Folder& folder) {
      const FileDescriptor copied = FileDescriptor::open(folder.destination, kOpenFolder);
      complete(copied, folder.mode, folder.destination);
    });
  }

 private:
  struct Folder {
    fs::path source;
    fs::path destination;
    mode_t mode;
  };

  void copyContents(const Folder& folder) {
    std::error_code error;
    fs::directory_iterator entry(folder.source, error);
    for (; !error && entry != fs::directory_iterator(); entry.increment(error)) {
      const fs::path name = entry->path().filename();
      if (isLeftOut_ && isLeftOut_(name)) continue;
      copyEntry(entry->path(), folder.destination / name);
    }
    check(error, folder.source);
  }

  void copyEntry(const fs::path& source, const fs::path& destination) {
    struct stat status {};
    if (::lstat(source.c_str(), &status) != 0) throwSystemError(source);
    if (S_ISDIR(status.st_mode)) {
      // Closed to others until it gets the permissions of its original.
      if (::mkdir(destination.c_str(), S_IRWXU) != 0) throwSystemError(destination);
      hasBegun_ = true;
      folders_.push_back({source, destination, status.st_mode});
    } else if (S_ISLNK(status.st_mode)) {
      std::error_code error;
      fs::copy_symlink(source, destination, error);
      check(error, destination);
      hasBegun_ = true;
    } else if (S_ISREG(status.st_mode)) {
      copyFile(source, destination);
    } else {
      throwSystemError(EINVAL, source.string() + ": neither a file nor a folder");
    }
  }

  void copyFile(const fs::path& source, const fs::path& destination) {
    const FileDescriptor original = FileDescriptor::open(source, kOpenToRead | O_NOFOLLOW);
    FileDescriptor copied = FileDescriptor::open(destination, kOpenNewFile, S_IRUSR | S_IWUSR);
    hasBegun_ = true;
    while (const std::size_t count = original.read(buffer_, source)) {
      copied.write({buffer_.data(), count}, destination);
    }
    complete(copied, original.status(source).st_mode, destination);
    copied.close(destination);
  }

  void complete(const FileDescriptor& copied, mode_t mode, const fs::path& destination) const {
    copied.setMode(mode & 0777, destination);
    if (durability_ == Durability::onTheDisk) copied.sync(destination);
  }

  const LeftOut& isLeftOut_;
  Durability durability_;
  bool hasBegun_ = false;
  std::vector<Folder> folders_;
  std::vector<char> buffer_ = std::vector<char>(std::size_t{1} << 17);
};

bool isInside(const fs::path& path, const fs::path& folder) {
  std::error_code error;
  const fs::path outer = fs::canonical(folder, error);
  if (error) return false;
  const fs::path inner = fs::weakly_canonical(path, error);
  if (error) return false;
  return std::mismatch(outer.begin(), outer.end(), inner.begin(), inner.end()).first == outer.end();
}

}  // namespace

void copyTree(const fs::path& source, const fs::path& destination, const LeftOut& isLeftOut,
              Durability durability) {
  std::error_code ignored;
  if (isTaken(destination)) throwSystemError(EEXIST, destination);
  if (fs::symlink_status(source, ignored).type() == fs::file_type::directory &&
      isInside(destination, source)) {
    throwSystemError(EINVAL, destination);
  }
  TreeCopy copy(isLeftOut, durability);
  try {
    copy.copy(source, destination);
  } catch (...) {
    // If the copy did not create it, it is not ours to remove.
    if (copy.hasBegun()) removeQuietly(destination);
    throw;
  }
}

}  // namespace tavlen
