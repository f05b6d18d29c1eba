#include "tavlen/foundation/files/FileReplacement.h"

#include <cerrno>
#include <cstdio>
#include <optional>
#include <utility>

#include "tavlen/foundation/base/SystemError.h"
#include "tavlen/foundation/files/DiskSync.h"

namespace tavlen {

namespace {

namespace fs = std::filesystem;

fs::path folderOf(const fs::path& file) {
  return file.has_parent_path() ? file.parent_path() : fs::path(".");
}

/// Follows symbolic links, also a dangling one, to the path that it names.
fs::path resolved(fs::path path) {
  constexpr int kMostLinks = 40;  // the system's own limit
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
  // A folder without read permission may still be writable.
  if (!opened && errno == EACCES) {
    opened = FileDescriptor::tryOpenAt(AT_FDCWD, folder.c_str(), kOpenToPass & ~O_NOFOLLOW);
  }
  if (!opened) throwSystemError(file);
  return opened;
}

/// The status of the file that is replaced; nothing if it does not exist yet.
std::optional<struct stat> replacedFile(int folder, const std::string& name, const fs::path& file) {
  if (name.empty()) throwSystemError(EISDIR, file);
  struct stat status {};
  if (::fstatat(folder, name.c_str(), &status, AT_SYMLINK_NOFOLLOW) != 0) {
    if (errno == ENOENT) return std::nullopt;
    throwSystemError(file);
  }
  if (S_ISDIR(status.st_mode)) throwSystemError(EISDIR, file);
  // Replacing a pipe or a device would destroy it.
  if (!S_ISREG(status.st_mode)) throwSystemError(EINVAL, file);
  return status;
}

/// Returns `folder` after the removal of what crashes left there.
int swept(const FileDescriptor& folder) {
  sweepTemporaryFiles(folder.get());
  return folder.get();
}

void copyPermissions(const struct stat& from, const FileDescriptor& to, const fs::path& file) {
  // Owner first: chown() clears mode bits. A file of another owner keeps that owner where the
  // system allows it.
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

// Mode 0666: a new file gets its permissions from the process's umask, like any other.
FileReplacement::FileReplacement(FileDescriptor folder, std::string name, fs::path shown,
                                 std::string_view contents)
    : file_(std::move(shown)),
      folder_(std::move(folder)),
      name_(std::move(name)),
      temporary_(swept(folder_), {}, 0666, file_) {
  const std::optional<struct stat> replaced = replacedFile(folder_.get(), name_, file_);
  // Before the contents, so that a private file never exposes them.
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
  (void)syncDescriptor(folder_.get());
}

void replaceFile(const fs::path& file, std::string_view contents) {
  FileReplacement(file, contents).commit();
}

}  // namespace tavlen
