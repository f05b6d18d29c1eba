#pragma once

#include <mutex>

#include "tavlen/foundation/base/API.h"
#include "tavlen/foundation/base/FunctionRef.h"

namespace tavlen {

/// Lets a caller make several changes without a notification for each.
///
/// Threads: any. A recursive lock is held while a body runs.
class TAVLEN_API NotificationPoster {
 public:
  /// Posts until it is silenced.
  NotificationPoster() = default;
  NotificationPoster(const NotificationPoster&) = delete;
  NotificationPoster& operator=(const NotificationPoster&) = delete;

  /// Runs `body`; until it ends, no thread posts through this poster. The former state is restored
  /// even if `body` throws.
  void performWithoutNotifications(FunctionRef<void()> body);
  /// Runs `body`, which posts; skips it while posting is silenced.
  void performNotificationPostingOperation(FunctionRef<void()> body);

  /// Whether bodies run. Read and change only with recursiveLock held.
  bool shouldPostNotifications = true;
  /// Held while a body runs.
  std::recursive_mutex recursiveLock;
};

}  // namespace tavlen
