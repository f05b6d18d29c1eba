#include "kvfileops/TreeRemoval.h"

#include <cerrno>
#include <optional>
#include <system_error>

#include "kvfileops/CallerRights.h"
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
    (void)::fchmod(folder, (status.st_mode & 07777) | S_IRWXU);  // the removal reports a failure
  }
}

/// The same as openFolder(), also for a folder that its owner may not even read.
std::optional<FileDescriptor> openAnyFolder(int parent, const std::string& name,
                                            const std::filesystem::path& shown) {
  try {
    return openFolder(parent, name, shown);
  } catch (const std::system_error& error) {
    // With lent rights nothing is closed, and what has the name by now may be another's file.
    const bool isClosed = error.code() == std::errc::permission_denied && !hasLentRights();
    if (!isClosed || ::fchmodat(parent, name.c_str(), S_IRWXU, AT_SYMLINK_NOFOLLOW) != 0) throw;
  }
  return openFolder(parent, name, shown);
}

bool emptyEntry(int parent, const std::string& name, const std::filesystem::path& shown, int depth);

void emptyOpened(FileDescriptor folder, const std::filesystem::path& shown, int depth) {
  makeWritable(folder.get());
  FolderReader reader(std::move(folder), shown);
  constexpr std::size_t kBatch = 1024;  // limits the memory, whatever the folder holds
  for (auto names = reader.first(kBatch); !names.empty(); names = reader.first(kBatch)) {
    for (const std::string& entry : names) {
      const bool isFolder = emptyEntry(reader.descriptor(), entry, shown / entry, depth + 1);
      unlink(reader.descriptor(), entry, isFolder ? AT_REMOVEDIR : 0, shown / entry);
    }
  }
}

/// Returns false where the entry is not a folder.
bool emptyEntry(int parent, const std::string& name, const std::filesystem::path& shown,
                int depth) {
  if (depth > kDeepestRemoval) throw Refusal(shown, "folders are nested too deeply");
  std::optional<FileDescriptor> folder = openAnyFolder(parent, name, shown);
  if (!folder) return false;
  emptyOpened(std::move(*folder), shown, depth);
  return true;
}

}  // namespace

void removeEntry(int parent, const std::string& name, const std::filesystem::path& shown) {
  const bool isFolder = emptyEntry(parent, name, shown, 1);
  unlink(parent, name, isFolder ? AT_REMOVEDIR : 0, shown);
}

bool emptyFolder(int parent, const std::string& name, const std::filesystem::path& shown) {
  return emptyEntry(parent, name, shown, 1);
}

void emptyFolder(FileDescriptor folder, const std::filesystem::path& shown) {
  emptyOpened(std::move(folder), shown, 1);
}

}  // namespace tavlen::fileops
