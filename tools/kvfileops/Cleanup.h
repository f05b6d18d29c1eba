#pragma once

#include <filesystem>

#include "tavlen/device/DeviceRoot.h"

namespace tavlen::fileops {

/// What is in the place of the removed entry in the end.
enum class AfterCleanup { nothing, emptyFolder };

/// Removes `path`, an entry of the folder of installed tweaks, with everything in it, and makes an
/// empty folder in its place if `after` says so. A new folder belongs to the caller. Throws Refusal
/// for any other path, std::system_error.
void cleanUp(const DeviceRoot& root, const std::filesystem::path& path, AfterCleanup after);

}  // namespace tavlen::fileops
