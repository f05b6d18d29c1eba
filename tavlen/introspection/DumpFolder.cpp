#include "tavlen/introspection/DumpFolder.h"

#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <string_view>
#include <system_error>
#include <vector>

#include "tavlen/device/DevicePaths.h"
#include "tavlen/device/DeviceRoot.h"
#include "tavlen/foundation/FileTree.h"
#include "tavlen/foundation/MainBundle.h"

namespace tavlen {

namespace {

namespace fs = std::filesystem;

[[noreturn]] void refuse(const fs::path& folder) {
  throw std::system_error(EPERM, std::generic_category(), folder.string());
}

/// Whether these are one entry on the disk, whatever their names; links are what they are.
bool isSame(const fs::path& first, const fs::path& second) {
  struct stat a {};
  struct stat b {};
  return ::lstat(first.c_str(), &a) == 0 && ::lstat(second.c_str(), &b) == 0 &&
         a.st_dev == b.st_dev && a.st_ino == b.st_ino;
}

/// Whether `folder` is `item` or holds it. The folders that lead to both are no links.
bool holds(const fs::path& folder, const fs::path& item) {
  for (fs::path outer = item;; outer = outer.parent_path()) {
    if (isSame(folder, outer)) return true;
    if (!outer.has_relative_path()) return false;
  }
}

fs::path withoutLinks(const fs::path& path) {
  std::error_code error;
  fs::path followed = fs::weakly_canonical(path, error);
  return error ? path : followed;
}

/// What of the library's own, and of the app's, lies on the disk.
std::vector<fs::path> untouchableFolders(const DeviceRoot& root, const fs::path& appDir) {
  const fs::path product = fs::path(kFileOperationsPath).parent_path().parent_path();
  return {root.resolve(kApplicationSupportDir), root.resolve(kTweakLibrariesDir),
          root.resolve(product.native()), MainBundle::url(), appDir};
}

/// What many share: folders in them are anybody's, they themselves nobody's.
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
  // Read only: nobody changes the environment while threads run.
  if (const char* const home = std::getenv("HOME")) {  // NOLINT(concurrency-mt-unsafe)
    folders.emplace_back(home);
  }
  return folders;
}

/// Where the folder of `archive` lies, the links that lead to it followed, itself not.
fs::path folderOf(const fs::path& archive, const DeviceRoot& root) {
  const bool leadsUp = std::find(archive.begin(), archive.end(), "..") != archive.end();
  if (archive.is_relative() || leadsUp) refuse(archive);
  const fs::path folder = archive.lexically_normal().parent_path();
  if (!folder.has_relative_path()) refuse(folder);
  const fs::path parent = fs::canonical(root.resolve(folder.parent_path().native()));
  if (fs::equivalent(parent, root.url())) refuse(folder);
  return parent / folder.filename();
}

}  // namespace

void removeDumpFolder(const fs::path& archive, const fs::path& appDir) {
  const DeviceRoot root = DeviceRoot::shared();
  const fs::path folder = folderOf(archive, root);
  for (const fs::path& named : untouchableFolders(root, appDir)) {
    const fs::path own = withoutLinks(named);
    if (holds(folder, own) || holds(own, folder)) refuse(folder);
  }
  for (const fs::path& shared : sharedFolders(root)) {
    if (holds(folder, withoutLinks(shared))) refuse(folder);
  }
  removeItem(folder);
}

}  // namespace tavlen
