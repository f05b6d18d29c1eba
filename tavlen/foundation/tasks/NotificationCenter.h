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

namespace tavlen {

struct Notification {
  std::string name;
  /// Who posts it; told apart by address, never looked at.
  const void* object = nullptr;
  /// What comes with it, by key; nothing where the poster gave none.
  std::optional<std::map<std::string, std::any>> userInfo;
};

/// Tells observers within the process what happened.
///
/// Threads: any. Observers run on the posting thread, in the order of their registration, before
/// post() returns, and no lock is held: they may post, add and remove observers. One that is added
/// during a post is not called in it, one that is removed is not called any more. A call that runs
/// on another thread already is not waited for. What a handler throws leaves post(); the observers
/// after it are then not called.
class NotificationCenter {
 public:
  using Handler = std::function<void(const Notification&)>;
  /// Names a registration.
  enum class Token : std::uint64_t {};

  NotificationCenter() = default;
  NotificationCenter(const NotificationCenter&) = delete;
  NotificationCenter& operator=(const NotificationCenter&) = delete;

  /// The one that the library posts to. It lives as long as the process.
  static NotificationCenter& default_();

  /// `handler` is called for notifications of that name, or of any, from that object, or from any.
  /// The registration stays until it is removed.
  Token addObserver(std::optional<std::string> name, const void* object, Handler handler);
  /// Does nothing for a registration that is gone already.
  void removeObserver(Token token);

  void post(const Notification& notification) const;

 private:
  struct Observer;

  mutable std::mutex lock_;
  std::vector<std::shared_ptr<Observer>> observers_;
  std::uint64_t lastToken_ = 0;
};

}  // namespace tavlen
