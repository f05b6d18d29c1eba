#pragma once

namespace tavlen::fileops {

/// Replaces what the process has inherited from its caller by a state of its own, so that neither a
/// careless nor a hostile caller can have a job end halfway or leave other permissions than meant:
/// - the mask of permissions for new files is 022;
/// - a file that grows beyond a limit, or a pipe that is closed, is an error and not a signal that
///   ends the process, and no alarm is set;
/// - the standard streams are open, so that no message ends up in a file that a job has opened;
/// - with lent rights there are no environment variables, and the limits of resources are lifted as
///   far as the system permits.
/// To be called before anything else, while there is one thread.
void takeOwnState();

}  // namespace tavlen::fileops
