#include "tavlen/device/InstalledTweaks.h"

#include <exception>

#include "tavlen/device/DevicePaths.h"
#include "tavlen/device/DeviceRoot.h"
#include "tavlen/foundation/FileSystem.h"
#include "tavlen/foundation/KeyedArchive.h"

namespace tavlen::InstalledTweaks {

std::string directory(const std::string& bundleID) {
  return std::string(kInstalledTweaksDir) + "/" + bundleID;
}

std::optional<TweakInfo> record(const std::string& bundleID) {
  if (!isPlainComponent(bundleID)) return std::nullopt;
  const std::string file = directory(bundleID) + "/" + std::string(kTweakInfoFilename);
  try {
    return decodeKeyedArchive<TweakInfo>(readFile(DeviceRoot::shared().resolve(file)));
  } catch (const std::exception&) {
    // Whatever stands there instead of a record, no tweak is active.
    return std::nullopt;
  }
}

}  // namespace tavlen::InstalledTweaks
