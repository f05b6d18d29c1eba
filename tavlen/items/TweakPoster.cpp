#include "tavlen/items/TweakPoster.h"

namespace tavlen {

NotificationPoster& tweakPoster() {
  // Never destroyed: threads may still write while the process ends.
  static auto* const poster = new NotificationPoster;
  return *poster;
}

}  // namespace tavlen
