#pragma once

#include <sys/types.h>

#include <cstdint>
#include <string>

/// Ending programs of the device. Nothing here reports a failure: a program that is missing, an app
/// that is not running or one that survives leave no trace. All block until the program that they
/// start has ended. Threads: any.
namespace tavlen {

/// Runs `path`, a host path that is not searched for, with the arguments "-9" and `argument`, and
/// waits. The child's pid, or -1 where it was not started or could not be waited for.
pid_t killProcess(const char* path, const char* argument);

/// Restarts the home screen.
void respring();

/// Ends the running app of that identifier, if there is one.
void killAppWithBundleID(const std::string& bundleID);

}  // namespace tavlen
