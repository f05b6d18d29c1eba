#pragma once

#include <string>

#include "tavlen/foundation/base/API.h"

namespace tavlen {

/// Ends the app with the identifier `bundleID` by killProcessWithPID(), if it is running. Blocks
/// until that is done, and cannot be cancelled; failures are not reported. Threads: any.
TAVLEN_API void killAppWithBundleID(const std::string& bundleID);

}  // namespace tavlen
