#pragma once

#include "tavlen/foundation/tasks/NotificationPoster.h"

namespace tavlen {

/// What all writes of tweaks and collections go through. Its lock serialises hook edits, creations
/// and imports. An item's own lock is to be taken before it, never after. Lives as long as the
/// process.
NotificationPoster& tweakPoster();

}  // namespace tavlen
