#pragma once

#include <condition_variable>
#include <deque>
#include <functional>
#include <future>
#include <mutex>
#include <string>
#include <thread>

#include "tavlen/foundation/base/API.h"
#include "tavlen/foundation/base/FunctionRef.h"

namespace tavlen {

/// A serial queue of work with its own thread. Work runs in the order of addition, one piece at a
/// time.
///
/// Threads: any. No lock is held while work runs.
class TAVLEN_API SerialQueue {
 public:
  /// A piece of work; its captures are destroyed on the queue's thread.
  using Work = std::function<void()>;

  /// Starts the thread. `label` names it in debuggers. Throws std::system_error when no thread can
  /// be started.
  explicit SerialQueue(std::string label);
  SerialQueue(const SerialQueue&) = delete;
  SerialQueue& operator=(const SerialQueue&) = delete;
  /// Runs all remaining work and waits for it. Must not be called by work of this queue.
  ~SerialQueue();

  /// Whether the caller is work of this queue.
  bool isCurrent() const { return std::this_thread::get_id() == thread_.get_id(); }

  /// Adds `work`, which must not throw, and returns at once.
  void async(Work work);

  /// Runs `work` after all work added before, and waits for its end; exceptions propagate. Aborts
  /// the process when called by work of this queue, which would deadlock.
  void sync(FunctionRef<void()> work);

  /// Adds `work` as sync() does, but returns at once. The future becomes ready with the end of the
  /// work, and holds its exception. What `work` refers to must live until then.
  std::future<void> submit(FunctionRef<void()> work);

 private:
  void run();

  std::string label_;
  std::mutex lock_;
  std::condition_variable changed_;
  std::deque<Work> queue_;
  bool isEnding_ = false;
  std::thread thread_;  // last member: it uses the others from its start
};

}  // namespace tavlen
