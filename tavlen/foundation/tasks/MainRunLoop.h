#pragma once

#include <functional>

#include "tavlen/foundation/base/API.h"
#include "tavlen/foundation/tasks/MainQueue.h"

namespace tavlen {

/// Calls a function soon, on the thread of a host's run loop. It is called from any thread, and
/// must return without waiting for the function.
using RunLoopSchedule = std::function<void(std::function<void()>)>;

/// Drains `queue`, which must live as long as the program, from a run loop from now on: by
/// `schedule`, after each addition and once for the work that is in it. An exception of the work is
/// logged. Replaces the queue's handler of additions; call once. Threads: any.
TAVLEN_API void drainInRunLoop(MainQueue& queue, const RunLoopSchedule& schedule);

#ifdef __APPLE__

/// Drains MainQueue::shared() from the run loop of the main thread, which the app's own start runs
/// (UIApplicationMain, CFRunLoopRun or dispatch_main). A host calls it once, on any thread.
TAVLEN_API void drainMainQueueInRunLoop();

#endif

}  // namespace tavlen
