#pragma once

#include <sys/types.h>

#include "tavlen/foundation/base/API.h"

/// Ends processes of the device with its own kill and killall programs, which DevicePrograms names.
/// Failures are not reported, neither a missing program nor a process that survives; check for the
/// program if that matters. All calls block until the program has ended, and cannot be cancelled.
/// Threads: any.
namespace tavlen {

/// Runs `path`, a host path that is not searched for in PATH, with the arguments "-9" and
/// `argument`, and waits for it. Returns the child's pid, or -1 when it could not be started or
/// waited for.
TAVLEN_API pid_t killProcess(const char* path, const char* argument);

/// Ends the process `pid`. Values below 1, which mean groups of processes, are ignored.
TAVLEN_API void killProcessWithPID(pid_t pid);

/// Restarts the home screen.
TAVLEN_API void respring();

}  // namespace tavlen
