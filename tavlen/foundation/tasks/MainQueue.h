#pragma once

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>

#include "tavlen/foundation/base/API.h"

namespace tavlen {

/// A serial queue of work that the host drains: from its run loop on the device, from its main loop
/// in a command, anywhere in tests. Nothing runs by itself; MainRunLoop.h connects it to a run
/// loop.
///
/// Threads: any. Work runs in the order of addition, one piece at a time, on the thread that
/// drains. No lock is held while work or the handler of additions runs.
class TAVLEN_API MainQueue {
 public:
  /// A piece of work; its captures are destroyed on the draining thread.
  using Work = std::function<void()>;

  /// An empty queue.
  MainQueue() = default;
  MainQueue(const MainQueue&) = delete;
  MainQueue& operator=(const MainQueue&) = delete;

  /// The queue to which the library adds its work. Never destroyed.
  static MainQueue& shared();

  /// Adds `work` and returns at once.
  void async(Work work);

  /// Runs the work in the queue; work added concurrently stays for the next call, so the call ends.
  /// Does nothing when called by work, or while another thread drains. An exception of the work
  /// propagates and leaves the rest of the queue. Returns the number of pieces that ran.
  std::size_t drain();

  /// Waits up to `timeout`, at most a day, for work that no other thread drains; then drains as
  /// above.
  std::size_t waitAndDrain(std::chrono::milliseconds timeout);

  /// Sets a handler that is called after each addition, on the adding thread, for the host to wake
  /// its run loop. An empty function removes it. A call of the former handler may still be running
  /// on another thread.
  void setWorkAddedHandler(std::function<void()> handler);

 private:
  /// The lock must be held.
  void endDraining();

  std::mutex lock_;
  std::condition_variable changed_;
  std::deque<Work> queue_;
  bool isDraining_ = false;
  std::shared_ptr<const std::function<void()>> workAdded_;
};

}  // namespace tavlen
