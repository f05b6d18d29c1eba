#pragma once

#include <filesystem>

#include "tavlen/device/DeviceRoot.h"

namespace tavlen::fileops {

/// Copies the file or folder `source` to `destination`, which lies below the folder of installed
/// tweaks, in a folder that exists, and does not exist itself. The source is read with the caller's
/// rights, and the copy belongs to the caller. Permissions are kept, but not the bits that lend the
/// owner's rights.
///
/// Not the library's copy, which follows paths: every entry here is opened in the folder around it.
///
/// Links and everything else that is neither file nor folder are refused. What fails leaves nothing
/// of the copy. Throws Refusal, std::system_error.
void copy(const DeviceRoot& root, const std::filesystem::path& source,
          const std::filesystem::path& destination);

}  // namespace tavlen::fileops
