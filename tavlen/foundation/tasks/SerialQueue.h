#pragma once

#include <condition_variable>
#include <deque>
#include <functional>
#include <mutex>
#include <string>
#include <thread>

#include "tavlen/foundation/base/FunctionRef.h"

namespace tavlen {

/// A serial queue of work with a thread of its own, which runs one piece after the other, in the
/// order of addition.
///
/// Threads: any; no lock is held while work runs.
class SerialQueue {
 public:
  using Work = std::function<void()>;

  /// `label` tells debuggers what the thread is for. Throws std::system_error where there can be no
  /// further thread.
  explicit SerialQueue(std::string label);
  SerialQueue(const SerialQueue&) = delete;
  SerialQueue& operator=(const SerialQueue&) = delete;
  /// Waits until all that was added has run. Not to be called by work of the queue.
  ~SerialQueue();

  /// Whether the caller is work of this queue.
  bool isCurrent() const { return std::this_thread::get_id() == thread_.get_id(); }

  /// Adds `work`, which must not throw, and returns at once.
  void async(Work work);

  /// Runs `work` after all that was added before, and waits for its end. What it throws leaves the
  /// call. Called by work of this queue it would wait for itself: a programming error.
  void sync(FunctionRef<void()> work);

 private:
  void run();

  std::string label_;
  std::mutex lock_;
  std::condition_variable changed_;
  std::deque<Work> queue_;
  bool isEnding_ = false;
  std::thread thread_;  // the last member: it uses the others from its start
};

}  // namespace tavlen
