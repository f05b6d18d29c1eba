#pragma once

#include <filesystem>
#include <string>

#include "tavlen/device/DeviceRoot.h"
#include "tavlen/foundation/base/API.h"

namespace tavlen {

/// The file name in an app bundle.
inline constexpr const char* kInfoPlistFilename = "Info.plist";

/// The bytes of the Info.plist in the folder `bundle`, at most 16 MiB (EFBIG). If it is a symbolic
/// link, it is followed as on the device. Throws std::system_error. Threads: any.
TAVLEN_API std::string readInfoPlist(const DeviceRoot& root, const std::filesystem::path& bundle);

}  // namespace tavlen
