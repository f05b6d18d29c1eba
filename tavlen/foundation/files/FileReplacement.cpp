#include "tavlen/foundation/files/FileReplacement.h"

#include <cerrno>
#include <cstdio>

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

/// The path that a replacement of `file` replaces: a regular file, or a path where nothing exists
/// yet.
fs::path targetOf(const fs::path& file) {
  fs::path target = resolved(file);
  std::error_code ignored;
  const fs::file_status status = fs::status(target, ignored);
  if (fs::is_directory(status)) throwSystemError(EISDIR, file);
  // Replacing a pipe or a device would destroy it.
  if (fs::exists(status) && !fs::is_regular_file(status)) throwSystemError(EINVAL, file);
  return target;
}

/// Creates the temporary file that is renamed to `target` later.
TemporaryFile makeTemporary(const fs::path& target, const fs::path& file) {
  const fs::path folder = folderOf(target);
  sweepTemporaryFiles(folder);
  // Mode 0666: a new file gets its permissions from the process's umask, like any other.
  return TemporaryFile(AT_FDCWD, folder, 0666, file);
}

}  // namespace

FileReplacement::FileReplacement(const fs::path& file, std::string_view contents)
    : file_(file), target_(targetOf(file)), temporary_(makeTemporary(target_, file)) {
  copyPermissions();  // before the contents, so that a private file never exposes them
  temporary_.descriptor().write(contents, file_);
  temporary_.finish();
}

void FileReplacement::copyPermissions() const {
  struct stat status {};
  if (::stat(target_.c_str(), &status) != 0) return;  // no file yet
  // Owner first: chown() clears mode bits. A file of another owner keeps that owner where the
  // system allows it.
  const bool isOurs = status.st_uid == ::geteuid() && status.st_gid == ::getegid();
  if (!isOurs && ::fchown(temporary_.descriptor().get(), status.st_uid, status.st_gid) != 0 &&
      errno != EPERM) {
    throwSystemError(file_);
  }
  temporary_.descriptor().setMode(status.st_mode & 07777, file_);
}

void FileReplacement::commit() {
  if (::rename(temporary_.path().c_str(), target_.c_str()) != 0) throwSystemError(file_);
  temporary_.leave();
  syncFolder(folderOf(target_));
}

void replaceFile(const fs::path& file, std::string_view contents) {
  FileReplacement(file, contents).commit();
}

}  // namespace tavlen
