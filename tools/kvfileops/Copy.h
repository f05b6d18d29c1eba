#pragma once

#include <filesystem>

#include "tavlen/device/DeviceRoot.h"

namespace tavlen::fileops {

/// Copies the file or folder `source` to `destination`, a new entry in an existing folder below the
/// folder of installed tweaks. The source is read with the caller's rights, and the copy belongs to
/// the caller. Permissions are kept, except the bits that lend the owner's rights.
///
/// It is not the library's copy, which follows paths: every entry here is opened in the folder that
/// holds it. Links, and everything else that is neither a file nor a folder, are refused. A failure
/// leaves nothing of the copy. Throws Refusal, std::system_error.
void copy(const DeviceRoot& root, const std::filesystem::path& source,
          const std::filesystem::path& destination);

}  // namespace tavlen::fileops
