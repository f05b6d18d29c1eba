#include "kvfileops/TreeRemoval.h"

#include <cerrno>
#include <optional>
#include <system_error>

#include "kvfileops/OpenEntry.h"
#include "kvfileops/Refusal.h"
#include "tavlen/foundation/base/SystemError.h"
#include "tavlen/foundation/files/FolderReader.h"

namespace tavlen::fileops {

namespace {

void unlink(int parent, const std::string& name, int flags, const std::filesystem::path& shown) {
  if (::unlinkat(parent, name.c_str(), flags) != 0 && errno != ENOENT) throwSystemError(shown);
}

/// A folder that was copied with its permissions may be closed to its owner, too.
void makeWritable(int folder) {
  struct stat status {};
  if (::fstat(folder, &status) == 0 && (status.st_mode & S_IRWXU) != S_IRWXU) {
    (void)::fchmod(folder, (status.st_mode & 07777) | S_IRWXU);  // removing tells what is wrong
  }
}

/// As openFolder(), for one that its owner may not even read.
std::optional<FileDescriptor> openAnyFolder(int parent, const std::string& name,
                                            const std::filesystem::path& shown) {
  try {
    return openFolder(parent, name, shown);
  } catch (const std::system_error& error) {
    const bool isClosed = error.code() == std::errc::permission_denied;
    if (!isClosed || ::fchmodat(parent, name.c_str(), S_IRWXU, AT_SYMLINK_NOFOLLOW) != 0) throw;
  }
  return openFolder(parent, name, shown);
}

/// Whether a folder stood there.
bool emptyFolder(int parent, const std::string& name, const std::filesystem::path& shown,
                 int depth) {
  if (depth > kDeepestRemoval) throw Refusal(shown, "folders are nested too deeply");
  std::optional<FileDescriptor> folder = openAnyFolder(parent, name, shown);
  if (!folder) return false;
  makeWritable(folder->get());
  FolderReader reader(std::move(*folder), shown);
  constexpr std::size_t kBatch = 1024;  // whatever the folder holds, memory stays bounded
  for (auto names = reader.first(kBatch); !names.empty(); names = reader.first(kBatch)) {
    for (const std::string& entry : names) {
      const bool isFolder = emptyFolder(reader.descriptor(), entry, shown / entry, depth + 1);
      unlink(reader.descriptor(), entry, isFolder ? AT_REMOVEDIR : 0, shown / entry);
    }
  }
  return true;
}

}  // namespace

void removeEntry(int parent, const std::string& name, const std::filesystem::path& shown) {
  const bool isFolder = emptyFolder(parent, name, shown, 1);
  unlink(parent, name, isFolder ? AT_REMOVEDIR : 0, shown);
}

bool emptyFolder(int parent, const std::string& name, const std::filesystem::path& shown) {
  return emptyFolder(parent, name, shown, 1);
}

}  // namespace tavlen::fileops
