#pragma once

#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>

#include "tavlen/items/TweakDiffProtocol.h"

namespace tavlen {

/// Follows the target app of one tweak or collection.
///
/// Its registration outlives it and does nothing once it is gone. Threads: any.
class TweakBundleIDObserver {
 public:
  /// `onUpdate` is called on the main queue after a change of the tweak that changed its bundle
  /// identifier. A manifest that cannot be read has none.
  static std::shared_ptr<TweakBundleIDObserver> with(std::shared_ptr<TweakProtocol> tweak,
                                                     std::function<void()> onUpdate);

  TweakBundleIDObserver(const TweakBundleIDObserver&) = delete;
  TweakBundleIDObserver& operator=(const TweakBundleIDObserver&) = delete;

  /// As last seen.
  std::optional<std::string> currBundleID() const;
  const std::shared_ptr<TweakProtocol>& tweak() const { return tweak_; }

 private:
  explicit TweakBundleIDObserver(std::shared_ptr<TweakProtocol> tweak);

  /// Gives whether the bundle identifier is another than before.
  bool readAgain();

  std::shared_ptr<TweakProtocol> tweak_;
  mutable std::mutex lock_;
  std::optional<std::string> currBundleID_;
};

}  // namespace tavlen
