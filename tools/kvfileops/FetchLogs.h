#pragma once

#include <filesystem>
#include <string>

#include "tavlen/device/DeviceRoot.h"

namespace tavlen::fileops {

/// Copies the crash logs that name the app's bundle identifier or its executable, in their names or
/// at their beginning, into the existing folder `destination`, with the caller's rights there.
///
/// A file that exists already stays as it is, which is not a failure: a second call copies only new
/// logs. An entry that is not a regular file is not a log. A log that cannot be read or written or
/// that is larger than 64 MiB is reported on standard error and does not stop the others; so is,
/// with lent rights, a log with a second name (a hard link). Where the apps cannot be read, only
/// the logs that name the identifier are copied. Returns false where there was such a log or
/// failure. Throws Refusal, std::system_error.
bool fetchLogs(const DeviceRoot& root, const std::string& bundleID,
               const std::filesystem::path& destination);

}  // namespace tavlen::fileops
