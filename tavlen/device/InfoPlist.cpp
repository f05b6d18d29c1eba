#include "tavlen/device/InfoPlist.h"

#include <system_error>

#include "tavlen/device/DeviceFiles.h"
#include "tavlen/foundation/base/Limits.h"
#include "tavlen/foundation/files/FileSystem.h"

namespace tavlen {

std::string readInfoPlist(const DeviceRoot& root, const std::filesystem::path& bundle) {
  return readFile(openedFile(root, bundle / kInfoPlistFilename), limits::kInfoPlistBytes);
}

}  // namespace tavlen
