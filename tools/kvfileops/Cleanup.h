#pragma once

#include <filesystem>

#include "tavlen/device/DeviceRoot.h"

namespace tavlen::fileops {

enum class AfterCleanup { nothing, emptyFolder };

/// Removes `path`, an entry of the folder of installed tweaks, with all that is in it; afterwards
/// an empty folder is there or nothing is. Throws Refusal for any other path, std::system_error.
void cleanUp(const DeviceRoot& root, const std::filesystem::path& path, AfterCleanup after);

}  // namespace tavlen::fileops
