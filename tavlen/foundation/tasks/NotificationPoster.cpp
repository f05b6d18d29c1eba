#include "tavlen/foundation/tasks/NotificationPoster.h"

#include <utility>

namespace tavlen {

namespace {

class Silence {
 public:
  explicit Silence(bool& posts) : posts_(posts), former_(std::exchange(posts, false)) {}
  ~Silence() { posts_ = former_; }
  Silence(const Silence&) = delete;
  Silence& operator=(const Silence&) = delete;

 private:
  bool& posts_;
  bool former_;
};

}  // namespace

void NotificationPoster::performWithoutNotifications(FunctionRef<void()> body) {
  const std::lock_guard lock(recursiveLock);
  const Silence silence(shouldPostNotifications);
  body();
}

void NotificationPoster::performNotificationPostingOperation(FunctionRef<void()> body) {
  const std::lock_guard lock(recursiveLock);
  if (shouldPostNotifications) body();
}

}  // namespace tavlen
