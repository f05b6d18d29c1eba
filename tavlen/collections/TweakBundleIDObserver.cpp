#include "tavlen/collections/TweakBundleIDObserver.h"

#include <algorithm>
#include <exception>
#include <utility>

#include "tavlen/foundation/tasks/MainQueue.h"
#include "tavlen/items/TweakDiffNotifications.h"
#include "tavlen/items/TweakProtocol.h"

namespace tavlen {

namespace {

std::optional<std::string> bundleIDOf(const TweakProtocol& tweak) {
  try {
    return tweak.genericConfiguration().bundleID();
  } catch (const std::exception&) {
    return std::nullopt;
  }
}

/// Whether the item `id` was created or changed. Only its first diff counts.
bool containsChange(const TweakDiffs& diffs, const std::string& id) {
  const auto first = std::find_if(diffs.begin(), diffs.end(), [&](const TweakDiff& diff) {
    return diff != nullptr && diff->genericTweak()->id() == id;
  });
  return first != diffs.end() && (*first)->genericMode() != GenericTweakDiffMode::delete_;
}

}  // namespace

std::shared_ptr<TweakBundleIDObserver> TweakBundleIDObserver::with(
    std::shared_ptr<TweakProtocol> tweak, std::function<void()> onUpdate) {
  std::shared_ptr<TweakBundleIDObserver> observer(new TweakBundleIDObserver(std::move(tweak)));
  addTweakDiffObserver(NotificationCenter::default_(),
                       [weakObserver = std::weak_ptr(observer), id = observer->tweak_->id(),
                        onUpdate = std::move(onUpdate)](const TweakDiffs& diffs) {
                         const std::shared_ptr<TweakBundleIDObserver> held = weakObserver.lock();
                         if (held == nullptr || !containsChange(diffs, id)) return;
                         if (held->readAgain()) MainQueue::shared().async(onUpdate);
                       });
  return observer;
}

TweakBundleIDObserver::TweakBundleIDObserver(std::shared_ptr<TweakProtocol> tweak)
    : tweak_(std::move(tweak)), currBundleID_(bundleIDOf(*tweak_)) {}

std::optional<std::string> TweakBundleIDObserver::currBundleID() const {
  const std::lock_guard lock(lock_);
  return currBundleID_;
}

bool TweakBundleIDObserver::readAgain() {
  // Read under the lock, so that an older value never overwrites a newer one.
  const std::lock_guard lock(lock_);
  const std::optional<std::string> former = std::exchange(currBundleID_, bundleIDOf(*tweak_));
  return currBundleID_ != former;
}

}  // namespace tavlen
