#include "tavlen/foundation/FileReplacement.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <random>
#include <string>
#include <system_error>

namespace tavlen {

namespace {

[[noreturn]] void fail(const std::filesystem::path& file) {
  throw std::system_error(errno, std::generic_category(), file.string());
}

/// A file that is gone again with the object, unless it took its place before.
class TemporaryFile {
 public:
  explicit TemporaryFile(const std::filesystem::path& target) {
    std::random_device random;
    do {
      const std::string name =
          ".tavlen-" + std::to_string(random()) + "-" + std::to_string(random());
      path_ = (target.parent_path() / name).string();
      // The plain mode, so that a new file gets its permissions as any other does, from the
      // process's mask.
      descriptor_ = ::open(path_.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
    } while (descriptor_ < 0 && errno == EEXIST);
    if (descriptor_ < 0) fail(target);
  }
  TemporaryFile(const TemporaryFile&) = delete;
  TemporaryFile& operator=(const TemporaryFile&) = delete;
  ~TemporaryFile() {
    if (descriptor_ >= 0) ::close(descriptor_);
    if (!path_.empty()) ::unlink(path_.c_str());
  }

  void write(std::string_view bytes, const std::filesystem::path& target) const {
    while (!bytes.empty()) {
      const ssize_t count = ::write(descriptor_, bytes.data(), bytes.size());
      if (count < 0 && errno == EINTR) continue;
      if (count < 0) fail(target);
      bytes.remove_prefix(static_cast<std::size_t>(count));
    }
  }

  void copyPermissions(const std::filesystem::path& target) const {
    struct stat status {};
    if (::stat(target.c_str(), &status) != 0) return;  // there is no file yet
    if (::fchmod(descriptor_, status.st_mode & 07777) != 0) fail(target);
  }

  void moveTo(const std::filesystem::path& target) {
    if (::fsync(descriptor_) != 0) fail(target);
    // Some file systems report a failed write only here.
    const int closed = ::close(descriptor_);
    descriptor_ = -1;
    if (closed != 0 && errno != EINTR) fail(target);
    if (::rename(path_.c_str(), target.c_str()) != 0) fail(target);
    path_.clear();
  }

 private:
  std::string path_;
  int descriptor_ = -1;
};

/// The file that `path` leads to, through links. A link to nothing leads to where it points.
std::filesystem::path resolved(const std::filesystem::path& path) {
  return std::filesystem::is_symlink(path) ? std::filesystem::weakly_canonical(path) : path;
}

/// Brings the new name to the disk. A file system that cannot is no reason to fail: the file is
/// whole either way.
void syncFolder(const std::filesystem::path& folder) {
  const int descriptor =
      ::open(folder.empty() ? "." : folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (descriptor < 0) return;
  ::fsync(descriptor);
  ::close(descriptor);
}

}  // namespace

void replaceFile(const std::filesystem::path& file, std::string_view contents) {
  const std::filesystem::path target = resolved(file);
  TemporaryFile temporary(target);
  temporary.write(contents, file);
  temporary.copyPermissions(target);
  temporary.moveTo(target);
  syncFolder(target.parent_path());
}

}  // namespace tavlen
