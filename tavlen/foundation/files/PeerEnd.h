#pragma once

#include <poll.h>

#include "tavlen/foundation/base/API.h"

namespace tavlen {

/// An entry for poll() that reports that the peer of `descriptor` is closed: any event in it means
/// the end. Pipes are watched on all systems, one that is read only as long as nothing is written
/// to it; Apple's systems report nothing else, not even a terminal, which ends by a signal.
/// Threads: any.
TAVLEN_API pollfd pollForPeerEnd(int descriptor);

}  // namespace tavlen
