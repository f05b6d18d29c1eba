#pragma once

#include "tavlen/bundles/Info.h"
#include "tavlen/bundles/Override.h"

namespace tavlen {

/// Applies `override_` to `info`. The iPad's orientations are set in the iPad's own list, unlike
/// Info::setIpadOrientations(). An absent minimum version removes the key.
void applyTo(Info& info, const Override& override_);

}  // namespace tavlen
