#include "tavlen/foundation/tasks/NotificationCenter.h"

#include <algorithm>
#include <atomic>
#include <iterator>
#include <utility>

namespace tavlen {

struct NotificationCenter::Observer {
  Observer(Token itsToken, std::optional<std::string> itsName, const void* itsObject,
           Handler itsHandler)
      : token(itsToken),
        name(std::move(itsName)),
        object(itsObject),
        handler(std::move(itsHandler)) {}

  bool wants(const Notification& notification) const {
    return (!name || *name == notification.name) &&
           (object == nullptr || object == notification.object);
  }

  const Token token;
  const std::optional<std::string> name;
  const void* const object;
  const Handler handler;
  std::atomic<bool> isRemoved = false;
};

NotificationCenter& NotificationCenter::default_() {
  // Never destroyed: other threads may post while the process ends.
  static NotificationCenter& center = *new NotificationCenter;
  return center;
}

NotificationCenter::Token NotificationCenter::addObserver(std::optional<std::string> name,
                                                          const void* object, Handler handler) {
  const std::lock_guard lock(lock_);
  const Token token{++lastToken_};
  observers_.push_back(
      std::make_shared<Observer>(token, std::move(name), object, std::move(handler)));
  return token;
}

void NotificationCenter::removeObserver(Token token) {
  // Destroyed after the lock is released: the handler's captures may use the centre in their
  // destructors.
  std::shared_ptr<Observer> removed;
  const std::lock_guard lock(lock_);
  const auto found =
      std::find_if(observers_.begin(), observers_.end(),
                   [token](const auto& observer) { return observer->token == token; });
  if (found == observers_.end()) return;
  removed = std::move(*found);
  removed->isRemoved = true;
  observers_.erase(found);
}

void NotificationCenter::post(const Notification& notification) const {
  std::vector<std::shared_ptr<Observer>> called;
  {
    const std::lock_guard lock(lock_);
    std::copy_if(observers_.begin(), observers_.end(), std::back_inserter(called),
                 [&](const auto& observer) { return observer->wants(notification); });
  }
  for (const std::shared_ptr<Observer>& observer : called) {
    if (!observer->isRemoved) observer->handler(notification);
  }
}

}  // namespace tavlen
