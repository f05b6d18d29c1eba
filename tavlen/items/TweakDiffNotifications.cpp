#include "tavlen/items/TweakDiffNotifications.h"

#include <any>
#include <map>
#include <string>
#include <utility>

namespace tavlen {

void postTweakDiffs(NotificationCenter& center, TweakDiffs diffs) {
  std::map<std::string, std::any> userInfo;
  userInfo.emplace(kTweakDiffsKey, std::move(diffs));
  center.post({std::string(kTweaksDidUpdateNotification), nullptr, std::move(userInfo)});
}

NotificationCenter::Token observeTweakDiffs(NotificationCenter& center,
                                            std::function<void(const TweakDiffs&)> handler) {
  return center.addObserver(std::string(kTweaksDidUpdateNotification), nullptr,
                            [handler = std::move(handler)](const Notification& notification) {
                              if (!notification.userInfo) return;
                              const auto entry =
                                  notification.userInfo->find(std::string(kTweakDiffsKey));
                              if (entry == notification.userInfo->end()) return;
                              if (const auto* diffs = std::any_cast<TweakDiffs>(&entry->second))
                                handler(*diffs);
                            });
}

void addTweakDiffObserver(NotificationCenter& center,
                          std::function<void(const TweakDiffs&)> handler) {
  static_cast<void>(observeTweakDiffs(center, std::move(handler)));
}

}  // namespace tavlen
