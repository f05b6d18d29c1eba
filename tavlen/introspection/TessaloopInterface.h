#pragma once

#include <functional>
#include <optional>
#include <string>

namespace tavlen {

/// Relaunches the app `bundleID` with the dump agent in it and waits for the archive of the classes
/// of its image at `imagePath`. Its path, or nothing on any failure.
std::optional<std::string> invokeTessaloop(const std::string& bundleID,
                                           const std::string& imagePath, bool isMainExecutable,
                                           std::function<void(double fraction)> progress);

/// Ends the request that runs, if one does; it answers nothing.
void cancelTessaloopIfNeeded();

}  // namespace tavlen
