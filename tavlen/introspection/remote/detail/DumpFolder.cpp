#include "tavlen/introspection/remote/detail/DumpFolder.h"

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstdlib>
#include <optional>
#include <string_view>
#include <vector>

#include "tavlen/device/DevicePaths.h"
#include "tavlen/device/DeviceRoot.h"
#include "tavlen/foundation/base/SystemError.h"
#include "tavlen/foundation/errors/MainBundle.h"
#include "tavlen/foundation/files/FileSystem.h"
#include "tavlen/foundation/files/TreeRemoval.h"

namespace tavlen {

namespace {

namespace fs = std::filesystem;
using Identity = DumpFolder::Identity;

std::optional<Identity> identityOf(int folder, const std::string& path, int flags) {
  struct stat status {};
  if (::fstatat(folder, path.c_str(), &status, flags) != 0) return std::nullopt;
  return Identity{status.st_dev, status.st_ino};
}

/// The identity of `path`, relative to an open folder, followed by those of its parent folders up
/// to the system's root, as far as they can be determined.
std::vector<Identity> outwards(int folder, std::string path) {
  std::vector<Identity> identities;
  for (;; path += "/..") {
    const std::optional<Identity> next = identityOf(folder, path, 0);
    // The root is its own parent.
    if (!next || (!identities.empty() && *next == identities.back())) return identities;
    identities.push_back(*next);
  }
}

bool holds(const std::vector<Identity>& identities, const Identity& identity) {
  return std::find(identities.begin(), identities.end(), identity) != identities.end();
}

/// Whether the entry `item` is the folder `named`, one of its parents, or a link of that name. A
/// folder that does not exist counts as its innermost existing parent.
bool isAround(const Identity& item, fs::path named) {
  if (identityOf(AT_FDCWD, named, AT_SYMLINK_NOFOLLOW) == item) return true;
  std::vector<Identity> identities = outwards(AT_FDCWD, named);
  while (identities.empty() && named.has_relative_path()) {
    named = named.parent_path();
    identities = outwards(AT_FDCWD, named);
  }
  return holds(identities, item);
}

FileDescriptor openFolder(int parent, const fs::path& name) {
  return FileDescriptor::tryOpenAt(parent, name.c_str(), kOpenFolder);
}

/// The folders of the library and of the app, which must never be deleted.
std::vector<fs::path> untouchableFolders(const DeviceRoot& root, const fs::path& appDir) {
  const fs::path product = fs::path(kFileOperationsPath).parent_path().parent_path();
  return {root.resolve(kApplicationSupportDir), root.resolve(kTweakLibrariesDir),
          root.resolve(product.native()), MainBundle::url(), appDir};
}

/// Shared folders: the agent may create its folder in them, but they must not be deleted
/// themselves.
std::vector<fs::path> sharedFolders(const DeviceRoot& root) {
  std::vector<fs::path> folders = {root.url()};
  for (const std::string_view path :
       {std::string_view("/tmp"), std::string_view("/var/tmp"), std::string_view("/var/mobile"),
        std::string_view("/var/mobile/Library/Application Support"), kCrashReporterDir}) {
    folders.push_back(root.resolve(path));
  }
  std::error_code error;
  folders.push_back(fs::temp_directory_path(error));
  folders.push_back(fs::current_path(error));
  // Reading is safe: no code changes the environment while threads run.
  if (const char* const home = std::getenv("HOME")) {  // NOLINT(concurrency-mt-unsafe)
    folders.emplace_back(home);
  }
  return folders;
}

}  // namespace

DumpFolder::DumpFolder(const std::string& archive) : path_(archive) {
  if (archive.find('\0') != std::string::npos) throwSystemError(EINVAL, path_);
  const DeviceRoot root = DeviceRoot::shared();
  const fs::path given(archive);
  fs::path file = given.lexically_normal();
  if (!file.has_filename()) file = file.parent_path();
  archive_ = file.filename();
  const fs::path folder = file.parent_path();
  const bool leadsUp = std::find(given.begin(), given.end(), "..") != given.end();
  if (given.is_absolute() && !leadsUp && folder.has_relative_path()) {
    name_ = folder.filename();
    openIn(fs::canonical(root.resolve(folder.parent_path().native())),
           root.resolve(folder.native()));
  } else {
    folder_ = openFolder(AT_FDCWD, fs::canonical(given.is_absolute() ? root.resolve(folder.native())
                                                                     : "." / folder));
  }
  if (folder_.get() < 0) throwSystemError(path_);
}

/// Opens the parent and the folder. `target` is the destination of a link in the folder's place.
void DumpFolder::openIn(const fs::path& parent, const fs::path& target) {
  path_ = parent / name_;
  parent_ = openFolder(AT_FDCWD, parent);
  if (parent_.get() < 0) return;
  struct stat status {};
  if (::fstatat(parent_.get(), name_.c_str(), &status, AT_SYMLINK_NOFOLLOW) != 0) return;
  isLink_ = S_ISLNK(status.st_mode);
  entry_ = {status.st_dev, status.st_ino};
  folder_ =
      isLink_ ? openFolder(AT_FDCWD, fs::canonical(target)) : openFolder(parent_.get(), name_);
  if (isLink_ || folder_.get() < 0) return;
  // From now on, the opened folder counts, not the name.
  if (const auto opened = identityOf(folder_.get(), ".", 0)) entry_ = *opened;
}

std::string DumpFolder::readArchive(std::size_t most) const {
  const fs::path shown = path_ / archive_;
  if (!isPlainComponent(archive_)) throwSystemError(EISDIR, shown);
  const FileDescriptor file =
      FileDescriptor::openAt(folder_.get(), archive_.c_str(), kOpenToRead | O_NOFOLLOW, shown);
  const struct stat status = file.status(shown);
  if (!S_ISREG(status.st_mode)) throwSystemError(EINVAL, shown.string() + ": not a regular file");
  // The size is a hint: the file may grow while it is read.
  if (static_cast<std::uintmax_t>(status.st_size) > most) throwSystemError(EFBIG, shown);
  std::string bytes;
  bytes.reserve(static_cast<std::size_t>(status.st_size));
  std::vector<char> buffer(std::size_t{1} << 16);
  while (const std::size_t count = file.read(buffer, shown)) {
    bytes.append(buffer.data(), count);
    if (bytes.size() > most) throwSystemError(EFBIG, shown);
  }
  return bytes;
}

void DumpFolder::remove(const fs::path& appDir) const {
  if (parent_.get() < 0) refuse();
  check(appDir);
  // Another file in its place is not the archive that was read.
  if (!isStillThere()) return;
  if (isLink_) return removeEntry(0);
  removeContents(folder_, path_);
  if (isStillThere()) removeEntry(AT_REMOVEDIR);
}

void DumpFolder::check(const fs::path& appDir) const {
  const DeviceRoot root = DeviceRoot::shared();
  std::vector<Identity> around = outwards(isLink_ ? parent_.get() : folder_.get(), ".");
  if (isLink_) around.insert(around.begin(), entry_);
  const std::optional<Identity> top = identityOf(AT_FDCWD, root.url(), 0);
  // The device's root must be above the folder's parent.
  if (!top || around.size() < 3 ||
      std::find(around.begin() + 2, around.end(), *top) == around.end()) {
    refuse();
  }
  for (const fs::path& own : untouchableFolders(root, appDir)) {
    const std::optional<Identity> identity = identityOf(AT_FDCWD, own, 0);
    if (isAround(entry_, own) || (identity && holds(around, *identity))) refuse();
  }
  for (const fs::path& shared : sharedFolders(root)) {
    if (isAround(entry_, shared)) refuse();
  }
}

/// Whether the name in the parent still refers to the opened entry. False when the name is free;
/// throws EPERM when it refers to something else.
bool DumpFolder::isStillThere() const {
  const std::optional<Identity> now = identityOf(parent_.get(), name_, AT_SYMLINK_NOFOLLOW);
  if (!now && errno != ENOENT) throwSystemError(path_);
  if (now && *now != entry_) refuse();
  return now.has_value();
}

void DumpFolder::removeEntry(int flags) const {
  if (::unlinkat(parent_.get(), name_.c_str(), flags) != 0 && errno != ENOENT)
    throwSystemError(path_);
}

void DumpFolder::refuse() const { throwSystemError(EPERM, path_); }

}  // namespace tavlen
