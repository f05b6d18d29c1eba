#include "kvfileops/NewFolder.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <utility>

#include "kvfileops/Failure.h"
#include "kvfileops/FolderReader.h"

namespace tavlen::fileops {

namespace {

/// Who may write in the parent can exchange the folder before it is opened, but can make none that
/// belongs to the program.
bool isFresh(int folder, const std::filesystem::path& shown) {
  struct stat status {};
  if (::fstat(folder, &status) != 0) fail(errno, shown);
  if (status.st_uid != ::geteuid()) return false;
  std::optional<Descriptor> again = openFolder(folder, ".", shown);
  return again && FolderReader(std::move(*again), shown).first(1).empty();
}

}  // namespace

std::optional<Descriptor> makeNewFolder(int parent, const std::string& name, mode_t mode,
                                        const std::filesystem::path& shown) {
  if (::mkdirat(parent, name.c_str(), mode) != 0) {
    if (errno == EEXIST) return std::nullopt;
    fail(errno, shown);
  }
  std::optional<Descriptor> folder = openFolder(parent, name, shown);
  if (!folder || !isFresh(folder->get(), shown)) {
    throw Refusal(shown, "was exchanged while it was made");
  }
  return folder;
}

Descriptor makeFolder(int parent, const std::string& name, Owner owner,
                      const std::filesystem::path& shown) {
  if (std::optional<Descriptor> folder = makeNewFolder(parent, name, 0755, shown)) {
    if (owner == Owner::caller) giveToCaller(folder->get(), shown);
    return std::move(*folder);
  }
  Descriptor folder(::openat(parent, name.c_str(), O_PATH | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
  if (folder.get() < 0) fail(errno, shown);
  return folder;
}

void giveToCaller(int descriptor, const std::filesystem::path& shown) {
  if (::geteuid() != ::getuid() && ::fchown(descriptor, ::getuid(), ::getgid()) != 0) {
    fail(errno, shown);
  }
}

}  // namespace tavlen::fileops
