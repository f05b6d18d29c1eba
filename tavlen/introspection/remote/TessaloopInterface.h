#pragma once

#include <functional>
#include <optional>
#include <string>

/// The process's way to the dump agent: one TessaloopClient at port 5432, with a pause of half a
/// second, which is made when it is first asked. Threads: any.
namespace tavlen {

/// Ends the app `bundleID`, opens it again with the dump agent in it, and waits for the archive of
/// the classes of its main executable, or of its image that the device names `imagePath`. The
/// archive's path, as the device names it, or nothing on any failure.
///
/// Ends an earlier request. Blocks, without limit where the agent never ends, until a cancel or
/// another request. `progress` is called on another thread, but never after the return, with
/// whatever the agent sends: any double but -1. It must not throw, and must not start a request.
std::optional<std::string> invokeTessaloop(const std::string& bundleID,
                                           const std::string& imagePath, bool isMainExecutable,
                                           const std::function<void(double fraction)>& progress);

/// Ends the requests that wait or run: they return nothing. Waits for a progress function that
/// runs, unless it is the one that calls. Not for signal handlers.
void cancelTessaloopIfNeeded();

}  // namespace tavlen
