#pragma once

#include <sys/types.h>

/// Ending programs of the device by its own kill and killall, as DevicePrograms names them. Nothing
/// here reports a failure: a program that is missing and a process that survives leave no trace; a
/// caller that wants to tell looks whether the program is there. All block until the program that
/// they start has ended. Threads: any.
namespace tavlen {

/// Runs `path`, a host path that is not searched for, with the arguments "-9" and `argument`, and
/// waits. The child's pid, or -1 where it was not started or could not be waited for.
pid_t killProcess(const char* path, const char* argument);

/// Ends the process `pid` of the device; one below 1, which would mean several, is left alone.
void killProcessWithPID(pid_t pid);

/// Restarts the home screen.
void respring();

}  // namespace tavlen
