#include "tavlen/device/InfoPlist.h"

#include <system_error>

#include "tavlen/foundation/base/Limits.h"
#include "tavlen/foundation/files/FileSystem.h"

namespace tavlen {

std::string readInfoPlist(const DeviceRoot& root, const std::filesystem::path& bundle) {
  std::filesystem::path file = bundle / kInfoPlistFilename;
  std::error_code ignored;
  if (std::filesystem::is_symlink(file, ignored)) file = root.follow(file);
  return readFileNamed(file.native(), AT_FDCWD, limits::kInfoPlistBytes);
}

}  // namespace tavlen
