#pragma once

#include "tavlen/foundation/base/API.h"
#include "tavlen/foundation/tasks/NotificationPoster.h"

namespace tavlen {

/// The poster through which every write of a tweak or a collection announces its change. Its lock
/// serialises hook edits, creations and imports. Lock order: an item's own lock before this one.
/// Lives as long as the process.
TAVLEN_API NotificationPoster& tweakPoster();

}  // namespace tavlen
