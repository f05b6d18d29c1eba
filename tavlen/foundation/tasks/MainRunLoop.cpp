#include "tavlen/foundation/tasks/MainRunLoop.h"

#include <exception>
#include <string>

#include "tavlen/foundation/text/Log.h"

#ifdef __APPLE__
#include <dispatch/dispatch.h>

#include <memory>
#include <utility>
#endif

namespace tavlen {

namespace {

/// Runs all work, also what is added during it: when work runs the loop itself, the nested call
/// leaves its additions to this one.
void drainAll(MainQueue& queue) {
  for (bool isEmpty = false; !isEmpty;) {
    try {
      isEmpty = queue.drain() == 0;
    } catch (const std::exception& error) {
      // A run loop is C; no exception may pass through it. The rest of the queue still runs.
      logMessage(std::string("uncaught exception in the main queue: ") + error.what());
    } catch (...) {
      logMessage("uncaught exception in the main queue");
    }
  }
}

}  // namespace

void drainInRunLoop(MainQueue& queue, const RunLoopSchedule& schedule) {
  const auto handler = [&queue, schedule] { schedule([&queue] { drainAll(queue); }); };
  queue.setWorkAddedHandler(handler);
  handler();
}

#ifdef __APPLE__

void drainMainQueueInRunLoop() {
  drainInRunLoop(MainQueue::shared(), [](std::function<void()> work) {
    auto context = std::make_unique<std::function<void()>>(std::move(work));
    // The main run loop runs the work of the main dispatch queue: dispatch_main(3).
    dispatch_async_f(dispatch_get_main_queue(), context.release(), [](void* given) {
      const std::unique_ptr<std::function<void()>> owned(
          static_cast<std::function<void()>*>(given));
      (*owned)();
    });
  });
}

#endif

}  // namespace tavlen
