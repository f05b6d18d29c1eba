#pragma once

#include <functional>
#include <string_view>

#include "tavlen/foundation/tasks/NotificationCenter.h"
#include "tavlen/items/TweakDiffProtocol.h"

/// The one notification that carries the changes of tweaks and collections. Threads: any.
namespace tavlen {

/// Its user info holds the TweakDiffs under kTweakDiffsKey; it has no object.
inline constexpr std::string_view kTweaksDidUpdateNotification = "TweaksDidUpdate";
inline constexpr std::string_view kTweakDiffsKey = "diffs";

/// Posts at once, even an empty list, whatever posters say.
void postTweakDiffs(NotificationCenter& center, TweakDiffs diffs);

/// `handler` is called with the diffs of every notification that holds some, on the posting thread,
/// for the life of the process.
void addTweakDiffObserver(NotificationCenter& center,
                          std::function<void(const TweakDiffs&)> handler);

}  // namespace tavlen
