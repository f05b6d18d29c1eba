#include "tavlen/foundation/files/FileTree.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <exception>

#include "tavlen/foundation/base/SystemError.h"
#include "tavlen/foundation/files/DiskSync.h"
#include "tavlen/foundation/files/ExclusiveRename.h"
#include "tavlen/foundation/files/FileDescriptor.h"
#include "tavlen/foundation/files/FileSystem.h"
#include "tavlen/foundation/files/TemporaryDirectory.h"
#include "tavlen/foundation/files/TreeRemoval.h"
#include "tavlen/foundation/files/detail/TreeCopy.h"

namespace tavlen {

namespace {

namespace fs = std::filesystem;

/// Returns 0 or an errno value; EEXIST when the destination exists.
int renameToNew(const fs::path& source, const fs::path& destination) {
  const int code = renameExclusively(AT_FDCWD, source.c_str(), destination.c_str());
  if (code != ENOTSUP) return code;
  if (isTaken(destination)) return EEXIST;
  return ::rename(source.c_str(), destination.c_str()) == 0 ? 0 : errno;
}

void moveAcrossVolumes(const fs::path& source, const fs::path& destination) {
  if (isTaken(destination)) throwSystemError(EEXIST, destination);
  const fs::path folder = fs::absolute(destination).parent_path();
  const TemporaryDirectory temporary(folder);
  const fs::path copied = temporary.path() / destination.filename();
  copyTree(source, copied, {}, Durability::onTheDisk);
  if (const int code = renameToNew(copied, destination)) throwSystemError(code, destination);
  syncFolder(folder);
  removeItem(source);
}

}  // namespace

void copyItem(const fs::path& source, const fs::path& destination,
              const std::function<bool(const fs::path& name)>& isLeftOut) {
  copyTree(source, destination, isLeftOut, Durability::whenTheSystemLikes);
}

void moveItem(const fs::path& source, const fs::path& destination) {
  const int code = renameToNew(source, destination);
  if (code == 0) return syncFolder(fs::absolute(destination).parent_path());
  if (code == EXDEV) return moveAcrossVolumes(source, destination);
  throwSystemError(code, code == ENOENT && !isTaken(source) ? source : destination);
}

void removeItem(const fs::path& item) {
  // A trailing slash would make the system follow a link.
  const fs::path entry = item.has_filename() ? item : item.parent_path();
  const auto checked = [&](int result) {
    if (result != 0 && errno != ENOENT) throwSystemError(item);
  };
  struct stat status {};
  if (::lstat(entry.c_str(), &status) != 0) {
    if (errno != ENOENT && errno != ENOTDIR) throwSystemError(item);
  } else if (!S_ISDIR(status.st_mode)) {
    checked(::unlink(entry.c_str()));
  } else if (::rmdir(entry.c_str()) != 0) {
    if (errno != ENOTEMPTY && errno != EEXIST) return checked(-1);
    const FileDescriptor folder = openForRemoval(AT_FDCWD, entry);
    if (!folder) throwSystemError(item);
    removeContents(folder, item);
    checked(::rmdir(entry.c_str()));
  }
}

void removeQuietly(const fs::path& item) noexcept {
  try {
    removeItem(item);
  } catch (const std::exception&) {
    // The caller cannot report it, or is reporting another error.
  }
}

}  // namespace tavlen
