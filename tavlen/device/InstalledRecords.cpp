#include "tavlen/device/InstalledRecords.h"

#include <exception>

#include "tavlen/device/DeviceFiles.h"
#include "tavlen/device/DevicePaths.h"
#include "tavlen/foundation/archive/KeyedArchive.h"
#include "tavlen/foundation/base/Limits.h"
#include "tavlen/foundation/files/FileSystem.h"

namespace tavlen::InstalledRecords {

std::string directory(const std::string& bundleID) {
  return std::string(kInstalledTweaksDir) + "/" + bundleID;
}

std::optional<TweakInfo> record(const std::string& bundleID) {
  if (!isPlainComponent(bundleID)) return std::nullopt;
  const std::string file = directory(bundleID) + "/" + std::string(kTweakInfoFilename);
  try {
    const DeviceRoot root = DeviceRoot::shared();
    const auto bytes =
        readFileUpTo(openedFile(root, root.resolve(file)), limits::kInstalledRecordBytes);
    if (!bytes) return std::nullopt;
    return decodeKeyedArchive<TweakInfo>(*bytes);
  } catch (const std::exception&) {
    // Whatever file is in the record's place, no tweak is active.
    return std::nullopt;
  }
}

}  // namespace tavlen::InstalledRecords
