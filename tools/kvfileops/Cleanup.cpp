#include "kvfileops/Cleanup.h"

#include "kvfileops/DeviceFolder.h"
#include "kvfileops/NewFolder.h"
#include "kvfileops/Refusal.h"
#include "kvfileops/TreeRemoval.h"
#include "tavlen/device/DevicePaths.h"

namespace tavlen::fileops {

void cleanUp(const DeviceRoot& root, const std::filesystem::path& path, AfterCleanup after) {
  DeviceFolder tweaks(root, kInstalledTweaksDir);
  const std::filesystem::path entry = tweaks.relativePath(path);
  if (entry.has_parent_path()) throw Refusal(path, "does not lie directly in the folder of tweaks");
  if (after == AfterCleanup::nothing) {
    if (tweaks.exists()) removeEntry(tweaks.descriptor().get(), entry.string(), path);
    return;
  }
  tweaks.make();
  const int folder = tweaks.descriptor().get();
  if (emptyFolder(folder, entry.string(), path)) return;
  removeEntry(folder, entry.string(), path);  // a file or a link in the folder's place
  (void)makeFolder(folder, entry.string(), Owner::caller, path);
}

}  // namespace tavlen::fileops
