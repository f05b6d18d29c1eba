#pragma once

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>

namespace tavlen {

/// A serial queue of work that its host drains: on the device from its run loop, in a command from
/// its main loop, in tests where they like. Nothing runs by itself.
///
/// Threads: any; no lock is held while work or the handler of additions runs. Work runs one piece
/// after the other, in the order of addition, on the thread that drains.
class MainQueue {
 public:
  using Work = std::function<void()>;

  MainQueue() = default;
  MainQueue(const MainQueue&) = delete;
  MainQueue& operator=(const MainQueue&) = delete;

  /// The one that the library adds to. It lives as long as the process.
  static MainQueue& shared();

  /// Adds `work` and returns at once.
  void async(Work work);

  /// Runs what is in the queue now; work that is added meanwhile stays for the next call, so the
  /// call ends. Does nothing inside of work, or while another thread drains. What a piece of work
  /// throws leaves the call; the pieces after it stay. Returns how many pieces ran.
  std::size_t drain();

  /// Waits for work that nobody else drains, no longer than `timeout`, and drains.
  std::size_t waitAndDrain(std::chrono::milliseconds timeout);

  /// `handler` is called after each addition, on the adding thread: a host wakes its run loop
  /// there. An empty one is none. A call of the former handler may still be running elsewhere.
  void setWorkAddedHandler(std::function<void()> handler);

 private:
  /// To be called with the lock held.
  void endDraining();

  std::mutex lock_;
  std::condition_variable changed_;
  std::deque<Work> queue_;
  bool isDraining_ = false;
  std::shared_ptr<const std::function<void()>> workAdded_;
};

}  // namespace tavlen
