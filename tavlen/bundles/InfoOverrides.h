#pragma once

#include "tavlen/bundles/Info.h"
#include "tavlen/bundles/Override.h"
#include "tavlen/foundation/base/API.h"

namespace tavlen {

/// Applies `override_` to `info`. The iPad's orientations are set in the iPad's own list, unlike
/// Info::setIpadOrientations(). An absent minimum version removes the key.
TAVLEN_API void applyTo(Info& info, const Override& override_);

}  // namespace tavlen
