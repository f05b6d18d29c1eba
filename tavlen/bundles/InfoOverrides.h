#pragma once

#include "tavlen/bundles/Info.h"
#include "tavlen/bundles/Override.h"

namespace tavlen {

/// Makes the edit of `info` that `override_` stands for. The iPad's orientations go to the iPad's
/// own list, whatever Info::setIpadOrientations() does; an absent minimum version removes the key.
void applyTo(Info& info, const Override& override_);

}  // namespace tavlen
