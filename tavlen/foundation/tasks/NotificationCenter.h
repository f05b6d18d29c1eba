#pragma once

#include <any>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "tavlen/foundation/base/API.h"

namespace tavlen {

/// A named event. A plain value.
struct TAVLEN_API Notification {
  /// What happened; observers may select by it.
  std::string name;
  /// The poster. Compared by address, never dereferenced; null for none.
  const void* object = nullptr;
  /// Further values by key; nothing when the poster gives none.
  std::optional<std::map<std::string, std::any>> userInfo;
};

/// Tells observers within the process what happened.
///
/// Threads: any. post() calls the observers on the posting thread, in the order of their
/// registration, and returns afterwards. No lock is held, so observers may post, add and remove
/// observers. An observer added during a post is not called in it; a removed one is not called any
/// more, but a call that already runs on another thread is not waited for. An exception of a
/// handler propagates from post() and skips the later observers.
class TAVLEN_API NotificationCenter {
 public:
  /// Called with each notification that an observer selects.
  using Handler = std::function<void(const Notification&)>;
  /// Identifies a registration.
  enum class Token : std::uint64_t {};

  /// A centre without observers.
  NotificationCenter() = default;
  NotificationCenter(const NotificationCenter&) = delete;
  NotificationCenter& operator=(const NotificationCenter&) = delete;

  /// The centre to which the library posts. Never destroyed.
  static NotificationCenter& default_();

  /// Registers `handler` for notifications of `name` from `object`. Nothing and null select any
  /// name and any object. The registration lasts until removeObserver().
  Token addObserver(std::optional<std::string> name, const void* object, Handler handler);
  /// Removes a registration; a no-op when it is already removed.
  void removeObserver(Token token);

  /// Calls the observers of `notification` (see the class).
  void post(const Notification& notification) const;

 private:
  struct Observer;

  mutable std::mutex lock_;
  std::vector<std::shared_ptr<Observer>> observers_;
  std::uint64_t lastToken_ = 0;
};

}  // namespace tavlen
