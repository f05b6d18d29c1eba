#include "kvfileops/OpenEntry.h"

#include <cerrno>

#include "tavlen/foundation/base/SystemError.h"

namespace tavlen::fileops {

struct stat statusOfEntry(int parent, const std::string& name, const std::filesystem::path& shown) {
  struct stat status {};
  if (::fstatat(parent, name.c_str(), &status, AT_SYMLINK_NOFOLLOW) != 0) throwSystemError(shown);
  return status;
}

std::optional<FileDescriptor> openFolder(int parent, const std::string& name,
                                         const std::filesystem::path& shown) {
  FileDescriptor folder = FileDescriptor::tryOpenAt(parent, name.c_str(), kOpenFolder);
  if (folder) return folder;
  if (errno == ENOTDIR || errno == ELOOP || errno == ENOENT) return std::nullopt;
  throwSystemError(shown);
}

std::optional<FileDescriptor> openRegularFile(int parent, const std::string& name,
                                              const std::filesystem::path& shown) {
  // The kind is asked first, because opening a device can make it act.
  if (!S_ISREG(statusOfEntry(parent, name, shown).st_mode)) return std::nullopt;
  FileDescriptor file = FileDescriptor::tryOpenAt(parent, name.c_str(), kOpenToRead | O_NOFOLLOW);
  if (!file && errno == ELOOP) return std::nullopt;
  if (!file) throwSystemError(shown);
  if (!S_ISREG(file.status(shown).st_mode)) return std::nullopt;
  return file;
}

}  // namespace tavlen::fileops
