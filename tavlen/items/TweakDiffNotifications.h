#pragma once

#include <functional>
#include <string_view>

#include "tavlen/foundation/base/API.h"
#include "tavlen/foundation/tasks/NotificationCenter.h"
#include "tavlen/items/TweakDiffProtocol.h"

/// The one notification that carries the changes of tweaks and collections. Threads: any.
namespace tavlen {

/// Its user info holds TweakDiffs under kTweakDiffsKey; its object is empty.
inline constexpr std::string_view kTweaksDidUpdateNotification = "TweaksDidUpdate";
/// The key of the TweakDiffs in the notification's user info.
inline constexpr std::string_view kTweakDiffsKey = "diffs";

/// Posts `diffs` immediately, even if the list is empty or tweakPoster() is silenced.
TAVLEN_API void postTweakDiffs(NotificationCenter& center, TweakDiffs diffs);

/// Calls `handler` with the diffs of every notification that has some, on the posting thread, until
/// the result is passed to NotificationCenter::removeObserver(). A call that already runs on
/// another thread, and work that the handler has queued, may run after that: let them hold a
/// std::weak_ptr to what may be gone.
TAVLEN_API [[nodiscard]] NotificationCenter::Token observeTweakDiffs(
    NotificationCenter& center, std::function<void(const TweakDiffs&)> handler);
/// As observeTweakDiffs(), but the observer is never removed.
TAVLEN_API void addTweakDiffObserver(NotificationCenter& center,
                                     std::function<void(const TweakDiffs&)> handler);

}  // namespace tavlen
