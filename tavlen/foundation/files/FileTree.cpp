#include "tavlen/foundation/files/FileTree.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <string>
#include <string_view>
#include <system_error>
#include <utility>
#include <vector>

#include "tavlen/foundation/files/DiskSync.h"
#include "tavlen/foundation/files/FileDescriptor.h"
#include "tavlen/foundation/files/RetryOnInterrupt.h"
#include "tavlen/foundation/files/TemporaryDirectory.h"
#include "tavlen/foundation/files/TreeRemoval.h"

namespace tavlen {

namespace {

namespace fs = std::filesystem;

using LeftOut = std::function<bool(const fs::path& name)>;

[[noreturn]] void fail(int code, const fs::path& path) {
  throw std::system_error(code, std::generic_category(), path.string());
}

void check(const std::error_code& error, const fs::path& path) {
  if (error) throw std::system_error(error, path.string());
}

bool isTaken(const fs::path& path) {
  std::error_code error;
  return fs::symlink_status(path, error).type() != fs::file_type::not_found;
}

class File {
 public:
  File(fs::path path, int flags, mode_t mode = 0) : path_(std::move(path)) {
    descriptor_ = retryOnInterrupt(
        [&] { return ::open(path_.c_str(), flags | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK, mode); });
    if (descriptor_ < 0) fail(errno, path_);
  }
  File(const File&) = delete;
  File& operator=(const File&) = delete;
  ~File() {
    if (descriptor_ >= 0) ::close(descriptor_);
  }

  struct stat status() const {
    struct stat status {};
    if (::fstat(descriptor_, &status) != 0) fail(errno, path_);
    return status;
  }
  std::size_t read(std::vector<char>& buffer) const {
    const ssize_t got =
        retryOnInterrupt([&] { return ::read(descriptor_, buffer.data(), buffer.size()); });
    if (got < 0) fail(errno, path_);
    return static_cast<std::size_t>(got);
  }
  void write(std::string_view bytes) const {
    while (!bytes.empty()) {
      const ssize_t count =
          retryOnInterrupt([&] { return ::write(descriptor_, bytes.data(), bytes.size()); });
      if (count <= 0) fail(count < 0 ? errno : EIO, path_);
      bytes.remove_prefix(static_cast<std::size_t>(count));
    }
  }
  void setMode(mode_t mode) const {
    if (::fchmod(descriptor_, mode & 0777) != 0) fail(errno, path_);
  }
  void sync() const {
    if (retryOnInterrupt([&] { return ::fsync(descriptor_); }) != 0) fail(errno, path_);
  }
  /// Some file systems report a failed write only here.
  void close() {
    if (::close(std::exchange(descriptor_, -1)) != 0 && errno != EINTR) fail(errno, path_);
  }

 private:
  fs::path path_;
  int descriptor_ = -1;
};

enum class Durability { whenTheSystemLikes, onTheDisk };

/// One copy of a tree. Folders wait in a list for their turn, so that depth costs no stack.
class TreeCopy {
 public:
  TreeCopy(const LeftOut& isLeftOut, Durability durability)
      : isLeftOut_(isLeftOut), durability_(durability) {}

  /// Whether anything was made at the destination.
  bool hasBegun() const { return hasBegun_; }

  void copy(const fs::path& source, const fs::path& destination) {
    copyEntry(source, destination);
    std::size_t next = 0;
    while (next < folders_.size()) {
      // A copy: the list grows meanwhile.
      const Folder folder = folders_[next++];
      copyContents(folder);
    }
    // Last and from below, as a folder may forbid to write into it.
    std::for_each(folders_.rbegin(), folders_.rend(), [this](const Folder& folder) {
      const File copied(folder.destination, O_RDONLY | O_DIRECTORY);
      copied.setMode(folder.mode);
      if (durability_ == Durability::onTheDisk) copied.sync();
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
    if (::lstat(source.c_str(), &status) != 0) fail(errno, source);
    if (S_ISDIR(status.st_mode)) {
      // Nobody else looks in before it has the permissions of its original.
      if (::mkdir(destination.c_str(), S_IRWXU) != 0) fail(errno, destination);
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
      fail(EINVAL, source.string() + ": neither a file nor a folder");
    }
  }

  void copyFile(const fs::path& source, const fs::path& destination) {
    const File original(source, O_RDONLY);
    File copied(destination, O_WRONLY | O_CREAT | O_EXCL, S_IRUSR | S_IWUSR);
    hasBegun_ = true;
    while (const std::size_t count = original.read(buffer_)) copied.write({buffer_.data(), count});
    copied.setMode(original.status().st_mode);
    if (durability_ == Durability::onTheDisk) copied.sync();
    copied.close();
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

void copyTree(const fs::path& source, const fs::path& destination, const LeftOut& isLeftOut,
              Durability durability) {
  std::error_code ignored;
  if (isTaken(destination)) fail(EEXIST, destination);
  if (fs::symlink_status(source, ignored).type() == fs::file_type::directory &&
      isInside(destination, source)) {
    fail(EINVAL, destination);
  }
  TreeCopy copy(isLeftOut, durability);
  try {
    copy.copy(source, destination);
  } catch (...) {
    try {
      // What another put there meanwhile is not ours to remove.
      if (copy.hasBegun()) removeItem(destination);
    } catch (const std::exception&) {
      // The first error tells more.
    }
    throw;
  }
}

/// Renames unless something stands at the destination, which plain rename() would replace. Gives 0,
/// or why not, as errno tells it.
int renameExclusively(const fs::path& source, const fs::path& destination) {
#ifdef __APPLE__
  if (::renamex_np(source.c_str(), destination.c_str(), RENAME_EXCL) == 0) return 0;
#else
  if (::renameat2(AT_FDCWD, source.c_str(), AT_FDCWD, destination.c_str(), RENAME_NOREPLACE) == 0) {
    return 0;
  }
#endif
  if (errno != EINVAL && errno != ENOTSUP) return errno;
  // Not every volume knows the exclusive form.
  if (isTaken(destination)) return EEXIST;
  return ::rename(source.c_str(), destination.c_str()) == 0 ? 0 : errno;
}

void moveAcrossVolumes(const fs::path& source, const fs::path& destination) {
  const TemporaryDirectory beside(fs::absolute(destination).parent_path());
  const fs::path copied = beside.path() / destination.filename();
  copyTree(source, copied, {}, Durability::onTheDisk);
  if (const int code = renameExclusively(copied, destination)) fail(code, destination);
  syncFolder(fs::absolute(destination).parent_path());
  removeItem(source);
}

}  // namespace

void copyItem(const fs::path& source, const fs::path& destination, const LeftOut& isLeftOut) {
  copyTree(source, destination, isLeftOut, Durability::whenTheSystemLikes);
}

void moveItem(const fs::path& source, const fs::path& destination) {
  const int code = renameExclusively(source, destination);
  if (code == 0) return syncFolder(fs::absolute(destination).parent_path());
  if (code == EXDEV) {
    if (isTaken(destination)) fail(EEXIST, destination);
    moveAcrossVolumes(source, destination);
  } else if (code == ENOENT) {
    fail(code, isTaken(source) ? destination : source);
  } else {
    fail(code, destination);
  }
}

void removeItem(const fs::path& item) {
  // With a slash at its end the system would follow a link.
  const fs::path entry = item.has_filename() ? item : item.parent_path();
  const auto checked = [&](int result) {
    if (result != 0 && errno != ENOENT) fail(errno, item);
  };
  struct stat status {};
  if (::lstat(entry.c_str(), &status) != 0) {
    if (errno != ENOENT && errno != ENOTDIR) fail(errno, item);
  } else if (!S_ISDIR(status.st_mode)) {
    checked(::unlink(entry.c_str()));
  } else if (::rmdir(entry.c_str()) != 0) {
    if (errno != ENOTEMPTY && errno != EEXIST) return checked(-1);
    const FileDescriptor folder = openForRemoval(AT_FDCWD, entry);
    if (folder.get() < 0) fail(errno, item);
    removeContents(folder, item);
    checked(::rmdir(entry.c_str()));
  }
}

}  // namespace tavlen
