#pragma once

#include <string_view>

#include "tavlen/foundation/base/API.h"
#include "tavlen/foundation/toml/TOMLError.h"
#include "tavlen/tweaktext/TweakText.h"

namespace tavlen {

/// Reads a tweak from the text of a tweak.toml. Unknown keys are errors that name the nearest known
/// one. Limits: those of readTOML(), and limits::kHooks. Errors: TOMLError. Threads: any.
TAVLEN_API TweakText readTweakText(std::string_view text);

}  // namespace tavlen
