#include "kvfileops/NewFolder.h"

#include <cerrno>
#include <utility>

#include "kvfileops/OpenEntry.h"
#include "kvfileops/Refusal.h"
#include "tavlen/foundation/base/SystemError.h"
#include "tavlen/foundation/files/FolderReader.h"

namespace tavlen::fileops {

namespace {

/// Whoever may write in the parent can exchange the folder before it is opened, but cannot make one
/// that belongs to the program.
bool isFresh(const FileDescriptor& folder, const std::filesystem::path& shown) {
  if (folder.status(shown).st_uid != ::geteuid()) return false;
  std::optional<FileDescriptor> again = openFolder(folder.get(), ".", shown);
  return again && FolderReader(std::move(*again), shown).first(1).empty();
}

}  // namespace

std::optional<FileDescriptor> makeNewFolder(int parent, const std::string& name, mode_t mode,
                                            const std::filesystem::path& shown) {
  if (::mkdirat(parent, name.c_str(), mode) != 0) {
    if (errno == EEXIST) return std::nullopt;
    throwSystemError(shown);
  }
  std::optional<FileDescriptor> folder;
  try {
    folder = openFolder(parent, name, shown);
    if (folder && !isFresh(*folder, shown)) folder.reset();
  } catch (...) {
    // The process may have no descriptor left. Only an empty folder is removed.
    (void)::unlinkat(parent, name.c_str(), AT_REMOVEDIR);
    throw;
  }
  if (!folder) throw Refusal(shown, "was exchanged while it was made");
  return folder;
}

FileDescriptor makeFolder(int parent, const std::string& name, Owner owner,
                          const std::filesystem::path& shown) {
  if (std::optional<FileDescriptor> folder = makeNewFolder(parent, name, 0755, shown)) {
    if (owner == Owner::caller) giveToCaller(*folder, shown);
    return std::move(*folder);
  }
  return FileDescriptor::openAt(parent, name.c_str(), kOpenToPass, shown);
}

void giveToCaller(const FileDescriptor& made, const std::filesystem::path& shown) {
  if (::geteuid() != ::getuid() && ::fchown(made.get(), ::getuid(), ::getgid()) != 0) {
    throwSystemError(shown);
  }
}

}  // namespace tavlen::fileops
