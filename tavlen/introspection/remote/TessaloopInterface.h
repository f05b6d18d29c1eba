#pragma once

#include <functional>
#include <optional>
#include <string>

#include "tavlen/foundation/base/API.h"

/// The process's access to the dump agent: one TessaloopClient on port 5432 with a pause of half a
/// second, created by the first request. Threads: any.
namespace tavlen {

/// Ends the app `bundleID`, opens it again with the dump agent in it, and waits for the archive of
/// the classes of its main executable, or of its image `imagePath` (a path on the device). Returns
/// the archive's path on the device, or nothing on any failure.
///
/// Cancels an earlier request. Blocks, without a time limit if the agent never ends, until a cancel
/// or another request. `progress` is called on another thread, never after the return, with any
/// double but -1 that the agent sends. It must not throw and must not start a request.
TAVLEN_API std::optional<std::string> invokeTessaloop(
    const std::string& bundleID, const std::string& imagePath, bool isMainExecutable,
    const std::function<void(double fraction)>& progress);

/// Cancels all waiting and running requests, which return nothing. Waits for a running progress
/// function, unless that makes this call. Not async-signal-safe.
TAVLEN_API void cancelTessaloopIfNeeded();

}  // namespace tavlen
