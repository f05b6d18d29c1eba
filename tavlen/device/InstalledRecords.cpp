#include "tavlen/device/InstalledRecords.h"

#include <exception>

#include "tavlen/device/DevicePaths.h"
#include "tavlen/device/DeviceRoot.h"
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
    const auto bytes =
        readFileUpTo(DeviceRoot::shared().resolve(file), limits::kInstalledRecordBytes);
    if (!bytes) return std::nullopt;
    return decodeKeyedArchive<TweakInfo>(*bytes);
  } catch (const std::exception&) {
    // Whatever stands there instead of a record, no tweak is active.
    return std::nullopt;
  }
}

}  // namespace tavlen::InstalledRecords
