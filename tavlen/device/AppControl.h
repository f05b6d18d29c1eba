#pragma once

#include <string>

namespace tavlen {

/// Ends the running app of that identifier, if there is one, by killProcessWithPID(). Blocks until
/// that is done and reports no failure. Threads: any.
void killAppWithBundleID(const std::string& bundleID);

}  // namespace tavlen
