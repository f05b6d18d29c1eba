#pragma once

#include <filesystem>
#include <string>

#include "tavlen/device/DeviceRoot.h"

namespace tavlen {

inline constexpr const char* kInfoPlistFilename = "Info.plist";

/// The bytes of the Info.plist in the folder `bundle`, 16 MiB at the most (EFBIG). A symbolic link
/// in its place is followed as the device does. Throws std::system_error.
std::string readInfoPlist(const DeviceRoot& root, const std::filesystem::path& bundle);

}  // namespace tavlen
