#include "tavlen/foundation/tasks/SerialQueue.h"

#include <pthread.h>

#include <exception>
#include <future>
#include <memory>
#include <utility>

#include "tavlen/foundation/base/FatalError.h"

namespace tavlen {

namespace {

void nameThisThread(const std::string& label) {
#if defined(__APPLE__)
  ::pthread_setname_np(label.c_str());
#else
  // Linux keeps 15 bytes. Keep the end of the label, where labels differ.
  constexpr std::size_t kMost = 15;
  const std::size_t start = label.size() > kMost ? label.size() - kMost : 0;
  ::pthread_setname_np(::pthread_self(), label.c_str() + start);
#endif
}

}  // namespace

SerialQueue::SerialQueue(std::string label)
    : label_(std::move(label)), thread_([this] {
        nameThisThread(label_);
        run();
      }) {}

SerialQueue::~SerialQueue() {
  {
    const std::lock_guard lock(lock_);
    isEnding_ = true;
  }
  changed_.notify_all();
  thread_.join();
}

void SerialQueue::async(Work work) {
  {
    const std::lock_guard lock(lock_);
    queue_.push_back(std::move(work));
  }
  changed_.notify_all();
}

void SerialQueue::sync(FunctionRef<void()> work) {
  if (isCurrent()) fatalError("the queue " + label_ + " waits for itself");
  submit(work).get();
}

std::future<void> SerialQueue::submit(FunctionRef<void()> work) {
  // Shared ownership: set_value() may still use the promise when the waiting thread returns.
  const auto end = std::make_shared<std::promise<void>>();
  std::future<void> future = end->get_future();
  async([end, work] {
    try {
      work();
      end->set_value();
    } catch (...) {
      end->set_exception(std::current_exception());
    }
  });
  return future;
}

void SerialQueue::run() {
  std::unique_lock lock(lock_);
  for (;;) {
    changed_.wait(lock, [this] { return !queue_.empty() || isEnding_; });
    if (queue_.empty()) return;
    Work work = std::move(queue_.front());
    queue_.pop_front();
    lock.unlock();
    work();
    work = nullptr;  // destroys its captures without the lock as well
    lock.lock();
  }
}

}  // namespace tavlen
