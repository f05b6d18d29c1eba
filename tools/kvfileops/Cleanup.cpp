#include "kvfileops/Cleanup.h"

#include "kvfileops/DeviceFolder.h"
#include "kvfileops/NewFolder.h"
#include "kvfileops/Refusal.h"
#include "kvfileops/TreeRemoval.h"
#include "tavlen/device/DevicePaths.h"

namespace tavlen::fileops {

void cleanUp(const DeviceRoot& root, const std::filesystem::path& path, AfterCleanup after) {
  const DeviceFolder tweaks(root, kInstalledTweaksDir);
  const std::filesystem::path entry = tweaks.relativePath(path);
  if (entry.has_parent_path()) throw Refusal(path, "does not lie directly in the folder of tweaks");
  if (after == AfterCleanup::nothing) {
    if (const auto folder = tweaks.open()) removeEntry(folder->get(), entry.string(), path);
    return;
  }
  const FileDescriptor folder = tweaks.make();
  if (emptyFolder(folder.get(), entry.string(), path)) return;
  removeEntry(folder.get(), entry.string(), path);  // a file or a link in the folder's place
  (void)makeFolder(folder.get(), entry.string(), Owner::caller, path);
}

}  // namespace tavlen::fileops
