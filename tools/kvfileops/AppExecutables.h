#pragma once

#include <set>
#include <string>

#include "tavlen/device/DeviceRoot.h"

namespace tavlen::fileops {

/// The names of the executables of the apps below `root` that have this bundle identifier, as far
/// as the list of apps shows them to the caller. Services and hidden apps are not among them; their
/// logs are recognised by the identifier. Throws std::system_error where the apps cannot be read.
std::set<std::string> executablesOfApp(const DeviceRoot& root, const std::string& bundleID);

}  // namespace tavlen::fileops
