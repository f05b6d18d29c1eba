#include "tavlen/foundation/files/FileReplacement.h"

#include <cerrno>
#include <cstdio>
#include <optional>
#include <utility>

#include "tavlen/foundation/base/SystemError.h"
#include "tavlen/foundation/files/RetryOnInterrupt.h"

namespace tavlen {

namespace {

namespace fs = std::filesystem;

fs::path folderOf(const fs::path& file) {
  return file.has_parent_path() ? file.parent_path() : fs::path(".");
}

/// The file that `path` leads to, through links; one to nothing leads to where it points.
fs::path resolved(fs::path path) {
  constexpr int kMostLinks = 40;  // as the system counts them
  std::error_code error;
  for (int links = 0; fs::is_symlink(path, error); ++links) {
    if (links == kMostLinks) throwSystemError(ELOOP, path);
    path = folderOf(path) / fs::read_symlink(path);
  }
  return path;
}

FileDescriptor openedFolder(const fs::path& folder, const fs::path& file) {
  FileDescriptor opened =
      FileDescriptor::tryOpenAt(AT_FDCWD, folder.c_str(), O_RDONLY | O_DIRECTORY);
  // A folder that may not be listed can take a file all the same.
  if (!opened && errno == EACCES) {
    opened = FileDescriptor::tryOpenAt(AT_FDCWD, folder.c_str(), kOpenToPass & ~O_NOFOLLOW);
  }
  if (!opened) throwSystemError(file);
  return opened;
}

/// The state of the file that is replaced; nothing where there is none yet.
std::optional<struct stat> replacedFile(int folder, const std::string& name, const fs::path& file) {
  if (name.empty()) throwSystemError(EISDIR, file);
  struct stat status {};
  if (::fstatat(folder, name.c_str(), &status, AT_SYMLINK_NOFOLLOW) != 0) {
    if (errno == ENOENT) return std::nullopt;
    throwSystemError(file);
  }
  if (S_ISDIR(status.st_mode)) throwSystemError(EISDIR, file);
  // A pipe or a device would be gone.
  if (!S_ISREG(status.st_mode)) throwSystemError(EINVAL, file);
  return status;
}

/// `folder`, without what crashes left there.
int swept(const FileDescriptor& folder) {
  sweepTemporaryFiles(folder.get());
  return folder.get();
}

void copyPermissions(const struct stat& from, const FileDescriptor& to, const fs::path& file) {
  // First, as it clears bits of the mode. What another owns stays theirs where we may give it away.
  const bool isOurs = from.st_uid == ::geteuid() && from.st_gid == ::getegid();
  if (!isOurs && ::fchown(to.get(), from.st_uid, from.st_gid) != 0 && errno != EPERM) {
    throwSystemError(file);
  }
  to.setMode(from.st_mode & 07777, file);
}

}  // namespace

FileReplacement::FileReplacement(const fs::path& file, std::string_view contents)
    : FileReplacement(file, resolved(file), contents) {}

FileReplacement::FileReplacement(const fs::path& file, const fs::path& target,
                                 std::string_view contents)
    : FileReplacement(openedFolder(folderOf(target), file), target.filename(), file, contents) {}

// The plain mode, so that a new file gets its permissions as any other, by the process's mask.
FileReplacement::FileReplacement(FileDescriptor folder, std::string name, fs::path shown,
                                 std::string_view contents)
    : file_(std::move(shown)),
      folder_(std::move(folder)),
      name_(std::move(name)),
      temporary_(swept(folder_), {}, 0666, file_) {
  const std::optional<struct stat> replaced = replacedFile(folder_.get(), name_, file_);
  // Before the contents, which a private file must not show for a moment.
  if (replaced) copyPermissions(*replaced, temporary_.descriptor(), file_);
  temporary_.descriptor().write(contents, file_);
  temporary_.finish();
}

void FileReplacement::commit() {
  if (::renameat(folder_.get(), temporary_.path().c_str(), folder_.get(), name_.c_str()) != 0) {
    throwSystemError(file_);
  }
  temporary_.leave();
  // Errors are ignored: not every file system can, and the file is whole either way.
  (void)retryOnInterrupt([&] { return ::fsync(folder_.get()); });
}

void replaceFile(const fs::path& file, std::string_view contents) {
  FileReplacement(file, contents).commit();
}

}  // namespace tavlen
