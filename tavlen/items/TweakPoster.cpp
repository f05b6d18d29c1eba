#include "tavlen/items/TweakPoster.h"

namespace tavlen {

NotificationPoster& tweakPoster() {
  // Deliberately leaked: threads may still write while the process exits.
  static auto* const poster = new NotificationPoster;
  return *poster;
}

}  // namespace tavlen
