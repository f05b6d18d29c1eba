#include "tavlen/foundation/tasks/Progress.h"

#include <algorithm>
#include <limits>
#include <mutex>
#include <thread>
#include <utility>

#include "tavlen/foundation/base/FatalError.h"

namespace tavlen {

namespace {

using Handler = std::function<void()>;

/// One lock for all progresses: updates walk from a leaf to the root, fractions from the root to
/// the leaves, so locks per progress would be taken in both orders.
std::mutex& treeLock() {
  static std::mutex& lock = *new std::mutex;
  return lock;
}

struct CurrentProgress {
  std::shared_ptr<Progress> progress;
  std::int64_t units;
  bool hasChild = false;
};

std::vector<CurrentProgress>& currentStack() {
  thread_local std::vector<CurrentProgress> stack;
  return stack;
}

std::int64_t saturatedSum(std::int64_t a, std::int64_t b) {
  std::int64_t sum = 0;
  if (!__builtin_add_overflow(a, b, &sum)) return sum;
  return b < 0 ? std::numeric_limits<std::int64_t>::min()
               : std::numeric_limits<std::int64_t>::max();
}

void runOnOwnThread(std::vector<Handler> handlers) {
  if (handlers.empty()) return;
  std::thread([handlers = std::move(handlers)] {
    for (const Handler& handler : handlers) handler();
  }).detach();
}

}  // namespace

/// A change under the lock. Progresses and handlers that it releases are destroyed after the lock
/// is released, because their captures may use a progress in their destructors.
class Progress::Update {
 public:
  Update() : lock_(treeLock()) {}
  ~Update() = default;
  Update(const Update&) = delete;
  Update& operator=(const Update&) = delete;

  /// Completes the units of `progress` in its parents, as far up as they are finished.
  void settle(std::shared_ptr<Progress> progress) {
    while (progress->isComplete()) {
      std::shared_ptr<Progress> parent = std::exchange(progress->parent_, {}).lock();
      if (parent == nullptr) break;
      auto& siblings = parent->children_;
      const auto place = std::find_if(siblings.begin(), siblings.end(), [&](const Child& child) {
        return child.progress == progress;
      });
      parent->completed_ = saturatedSum(parent->completed_, place->units);
      siblings.erase(place);
      released_.push_back(std::exchange(progress, std::move(parent)));
    }
    released_.push_back(std::move(progress));
  }

  void attach(const std::shared_ptr<Progress>& parent, const std::shared_ptr<Progress>& child,
              std::int64_t units) {
    checkAncestors(parent, child);
    parent->children_.push_back({child, units});
    child->parent_ = parent;
    if (parent->isCancelled_) cancel(*child);
    settle(child);
  }

  /// Cancels without recursion, in pre-order.
  void cancel(Progress& top) {
    std::vector<Progress*> rest = {&top};
    while (!rest.empty()) {
      Progress& progress = *rest.back();
      rest.pop_back();
      // Its descendants are then cancelled as well, also those added later.
      if (std::exchange(progress.isCancelled_, true)) continue;
      if (progress.cancellationHandler_) handlers_.push_back(progress.cancellationHandler_);
      std::for_each(progress.children_.rbegin(), progress.children_.rend(),
                    [&](const Child& child) { rest.push_back(child.progress.get()); });
    }
  }

  void addHandler(Handler handler) { handlers_.push_back(std::move(handler)); }

  /// Releases the lock and runs the collected cancellation handlers.
  void finish() {
    lock_.unlock();
    runOnOwnThread(std::move(handlers_));
  }

 private:
  void checkAncestors(std::shared_ptr<Progress> parent, const std::shared_ptr<Progress>& child) {
    if (!child->parent_.expired()) fatalError("Progress: the child already has a parent");
    while (parent != nullptr) {
      if (parent == child) fatalError("Progress: the child is an ancestor of its parent");
      released_.push_back(parent);
      parent = parent->parent_.lock();
    }
  }

  std::vector<std::shared_ptr<Progress>> released_;
  std::vector<Handler> handlers_;
  std::unique_lock<std::mutex> lock_;  // last member: released first
};

std::shared_ptr<Progress> Progress::make(std::int64_t totalUnitCount) {
  std::shared_ptr<Progress> progress = discrete(totalUnitCount);
  std::vector<CurrentProgress>& stack = currentStack();
  if (!stack.empty() && !std::exchange(stack.back().hasChild, true)) {
    stack.back().progress->addChild(progress, stack.back().units);
  }
  return progress;
}

std::shared_ptr<Progress> Progress::discrete(std::int64_t totalUnitCount) {
  return std::make_shared<Progress>(Access{}, totalUnitCount);
}

std::int64_t Progress::totalUnitCount() const {
  const std::lock_guard lock(treeLock());
  return total_;
}

void Progress::setTotalUnitCount(std::int64_t count) {
  Update update;
  total_ = count;
  update.settle(shared_from_this());
}

std::int64_t Progress::completedUnitCount() const {
  const std::lock_guard lock(treeLock());
  return completed_;
}

void Progress::setCompletedUnitCount(std::int64_t count) {
  Update update;
  completed_ = count;
  update.settle(shared_from_this());
}

bool Progress::isComplete() const {
  return total_ == 0 ? completed_ > 0 : total_ > 0 && completed_ >= total_;
}

double Progress::fraction() const {
  if (!isValid()) return 0;
  if (total_ == 0) return completed_ > 0 ? 1 : 0;
  const auto total = static_cast<double>(total_);
  double sum = static_cast<double>(completed_) / total;
  for (const Child& child : children_) {
    sum += static_cast<double>(child.units) / total * child.progress->fraction();
  }
  return sum;
}

double Progress::fractionCompleted() const {
  const std::lock_guard lock(treeLock());
  return fraction();
}

bool Progress::isIndeterminate() const {
  const std::lock_guard lock(treeLock());
  return !isValid() || (total_ == 0 && completed_ == 0);
}

bool Progress::isFinished() const {
  const std::lock_guard lock(treeLock());
  return isComplete();
}

void Progress::addChild(const std::shared_ptr<Progress>& child, std::int64_t pendingUnitCount) {
  const std::shared_ptr<Progress> self = shared_from_this();  // until the lock is released
  Update update;
  update.attach(self, child, pendingUnitCount);
  update.finish();
}

std::shared_ptr<Progress> Progress::current() {
  const std::vector<CurrentProgress>& stack = currentStack();
  return stack.empty() ? nullptr : stack.back().progress;
}

void Progress::becomeCurrent(std::int64_t pendingUnitCount) {
  currentStack().push_back({shared_from_this(), pendingUnitCount});
}

void Progress::resignCurrent() {
  std::vector<CurrentProgress>& stack = currentStack();
  if (stack.empty() || stack.back().progress.get() != this) {
    fatalError("Progress: resignCurrent() of a progress that is not current");
  }
  const CurrentProgress last = std::move(stack.back());
  stack.pop_back();
  if (last.hasChild) return;
  Update update;
  completed_ = saturatedSum(completed_, last.units);
  update.settle(last.progress);
}

bool Progress::isCancelled() const {
  const std::lock_guard lock(treeLock());
  return isCancelled_;
}

void Progress::cancel() {
  Update update;
  update.cancel(*this);
  update.finish();
}

void Progress::setCancellationHandler(std::function<void()> handler) {
  Update update;
  cancellationHandler_.swap(handler);  // the former handler is destroyed with the parameter
  if (isCancelled_ && cancellationHandler_) update.addHandler(cancellationHandler_);
  update.finish();
}

}  // namespace tavlen
