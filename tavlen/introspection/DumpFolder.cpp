#include "tavlen/introspection/DumpFolder.h"

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

/// Whether `folder` is `item` or holds it. By what they are on the disk, not by their names.
bool holds(const fs::path& folder, const fs::path& item) {
  std::error_code error;
  fs::path outer = fs::weakly_canonical(item, error);
  if (error) outer = item;
  for (;; outer = outer.parent_path()) {
    if (fs::equivalent(folder, outer, error) && !error) return true;
    if (!outer.has_relative_path()) return false;
  }
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
  for (const fs::path& own : untouchableFolders(root, appDir)) {
    if (!own.empty() && (holds(folder, own) || holds(own, folder))) refuse(folder);
  }
  for (const fs::path& shared : sharedFolders(root)) {
    if (!shared.empty() && holds(folder, shared)) refuse(folder);
  }
  removeItem(folder);
}

}  // namespace tavlen
