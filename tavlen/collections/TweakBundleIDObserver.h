#pragma once

#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>

#include "tavlen/foundation/base/API.h"
#include "tavlen/items/TweakDiffProtocol.h"

namespace tavlen {

/// Observes the target app of one tweak or collection.
///
/// Its registration is never removed, but does nothing once the observer has been destroyed.
/// Threads: any.
class TAVLEN_API TweakBundleIDObserver {
 public:
  /// Calls `onUpdate` on the main queue whenever a posted change of `tweak` has changed its bundle
  /// identifier. A manifest that cannot be read counts as having no bundle identifier.
  static std::shared_ptr<TweakBundleIDObserver> with(std::shared_ptr<TweakProtocol> tweak,
                                                     std::function<void()> onUpdate);

  TweakBundleIDObserver(const TweakBundleIDObserver&) = delete;
  TweakBundleIDObserver& operator=(const TweakBundleIDObserver&) = delete;

  /// The bundle identifier as last read; nothing if the manifest could not be read.
  std::optional<std::string> currBundleID() const;
  /// The observed item.
  const std::shared_ptr<TweakProtocol>& tweak() const { return tweak_; }

 private:
  explicit TweakBundleIDObserver(std::shared_ptr<TweakProtocol> tweak);

  /// Reads the bundle identifier again and returns whether it has changed.
  bool readAgain();

  std::shared_ptr<TweakProtocol> tweak_;
  mutable std::mutex lock_;
  std::optional<std::string> currBundleID_;
};

}  // namespace tavlen
