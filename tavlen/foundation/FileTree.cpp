#include "tavlen/foundation/FileTree.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <string>
#include <system_error>

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

void copyTree(const fs::path& source, const fs::path& destination, const LeftOut& isLeftOut) {
  std::error_code error;
  const fs::file_status status = fs::symlink_status(source, error);
  if (status.type() == fs::file_type::not_found) fail(ENOENT, source);
  check(error, source);
  if (status.type() == fs::file_type::symlink) {
    fs::copy_symlink(source, destination, error);
    check(error, destination);
  } else if (status.type() == fs::file_type::regular) {
    fs::copy_file(source, destination, error);
    check(error, destination);
  } else if (status.type() == fs::file_type::directory) {
    fs::create_directory(destination, error);
    check(error, destination);
    fs::directory_iterator entry(source, error);
    for (; !error && entry != fs::directory_iterator(); entry.increment(error)) {
      const fs::path name = entry->path().filename();
      if (!isLeftOut || !isLeftOut(name)) copyTree(entry->path(), destination / name, isLeftOut);
    }
    check(error, source);
    // Last, as a folder may forbid to write into it.
    fs::permissions(destination, status.permissions(), error);
    check(error, destination);
  } else {
    fail(EINVAL, source);
  }
}

/// Renames unless something stands at the destination, which plain rename() would replace.
bool renameExclusively(const fs::path& source, const fs::path& destination) {
#ifdef __APPLE__
  return ::renamex_np(source.c_str(), destination.c_str(), RENAME_EXCL) == 0;
#else
  return ::renameat2(AT_FDCWD, source.c_str(), AT_FDCWD, destination.c_str(), RENAME_NOREPLACE) ==
         0;
#endif
}

}  // namespace

void copyItem(const fs::path& source, const fs::path& destination, const LeftOut& isLeftOut) {
  if (isTaken(destination)) fail(EEXIST, destination);
  try {
    copyTree(source, destination, isLeftOut);
  } catch (...) {
    std::error_code ignored;
    fs::remove_all(destination, ignored);
    throw;
  }
}

void moveItem(const fs::path& source, const fs::path& destination) {
  if (renameExclusively(source, destination)) return;
  // Not every volume knows the exclusive form.
  if (errno == EINVAL || errno == ENOTSUP) {
    if (isTaken(destination)) fail(EEXIST, destination);
    if (::rename(source.c_str(), destination.c_str()) == 0) return;
  }
  const int code = errno;
  if (code == ENOENT) fail(code, isTaken(source) ? destination : source);
  if (code != EXDEV) fail(code, destination);
  copyItem(source, destination);
  std::error_code error;
  fs::remove_all(source, error);
  check(error, source);
}

}  // namespace tavlen
