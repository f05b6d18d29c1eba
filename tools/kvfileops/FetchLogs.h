#pragma once

#include <filesystem>
#include <string>

#include "tavlen/device/DeviceRoot.h"

namespace tavlen::fileops {

/// Copies the crash logs that name the app's bundle identifier or its executable, in their names or
/// at their beginning, into the existing folder `destination`, with the caller's rights there.
///
/// A file that is there already stays as it is, which is no failure: a second call brings what is
/// new. What is no regular file is no log. A log that cannot be read or written, that is larger
/// than 64 MiB or has a second name (a hard link), is told on the standard error stream and does
/// not stop the others. Where the apps cannot be looked at, the logs that name the identifier are
/// copied.
/// False where there was such a log or failure. Throws Refusal, std::system_error.
bool fetchLogs(const DeviceRoot& root, const std::string& bundleID,
               const std::filesystem::path& destination);

}  // namespace tavlen::fileops
