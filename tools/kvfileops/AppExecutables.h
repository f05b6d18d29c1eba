#pragma once

#include <set>
#include <string>

#include "tavlen/device/DeviceRoot.h"

namespace tavlen::fileops {

/// The names of the executables of the apps below `root` that have this bundle identifier. Apps
/// that cannot be read are passed over.
std::set<std::string> executablesOfApp(const DeviceRoot& root, const std::string& bundleID);

}  // namespace tavlen::fileops
