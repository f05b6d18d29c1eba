#include "tavlen/foundation/tasks/MainQueue.h"

#include <algorithm>
#include <utility>

namespace tavlen {

MainQueue& MainQueue::shared() {
  // Never destroyed: other threads may add work while the process ends.
  static MainQueue& queue = *new MainQueue;
  return queue;
}

void MainQueue::async(Work work) {
  std::shared_ptr<const std::function<void()>> handler;
  {
    const std::lock_guard lock(lock_);
    queue_.push_back(std::move(work));
    handler = workAdded_;
  }
  changed_.notify_all();
  if (handler != nullptr) (*handler)();
}

std::size_t MainQueue::drain() {
  std::unique_lock lock(lock_);
  if (isDraining_) return 0;
  isDraining_ = true;
  const std::size_t count = queue_.size();
  try {
    for (std::size_t i = 0; i < count; ++i) {
      Work work = std::move(queue_.front());
      queue_.pop_front();
      lock.unlock();
      work();
      work = nullptr;  // destroys its captures without the lock as well
      lock.lock();
    }
  } catch (...) {
    lock.lock();
    endDraining();
    throw;
  }
  endDraining();
  return count;
}

void MainQueue::endDraining() {
  isDraining_ = false;
  changed_.notify_all();
}

std::size_t MainQueue::waitAndDrain(std::chrono::milliseconds timeout) {
  // The clock overflows for timeouts that a caller may pass.
  constexpr std::chrono::milliseconds kShortest(0);
  constexpr std::chrono::milliseconds kLongest = std::chrono::hours(24);
  {
    std::unique_lock lock(lock_);
    changed_.wait_for(lock, std::clamp(timeout, kShortest, kLongest),
                      [this] { return !queue_.empty() && !isDraining_; });
  }
  return drain();
}

void MainQueue::setWorkAddedHandler(std::function<void()> handler) {
  std::shared_ptr<const std::function<void()>> next;
  if (handler) next = std::make_shared<const std::function<void()>>(std::move(handler));
  const std::lock_guard lock(lock_);
  workAdded_.swap(next);  // the former handler is destroyed after the lock is released
}

}  // namespace tavlen
