#pragma once

#include <mutex>

#include "tavlen/foundation/base/FunctionRef.h"

namespace tavlen {

/// Lets a caller make several changes in silence.
///
/// Threads: any; the lock is held while a body runs, and may be taken again by the same thread.
class NotificationPoster {
 public:
  NotificationPoster() = default;
  NotificationPoster(const NotificationPoster&) = delete;
  NotificationPoster& operator=(const NotificationPoster&) = delete;

  /// Runs `body`, during which nothing is posted through this poster, by any thread. The former
  /// state comes back however `body` ends.
  void performWithoutNotifications(FunctionRef<void()> body);
  /// Runs `body`, which posts, unless posting is silenced: then the notification is dropped.
  void performNotificationPostingOperation(FunctionRef<void()> body);

  /// To be read and changed under recursiveLock.
  bool shouldPostNotifications = true;
  std::recursive_mutex recursiveLock;
};

}  // namespace tavlen
