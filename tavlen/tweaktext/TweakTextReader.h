#pragma once

#include <optional>
#include <string_view>

#include "tavlen/foundation/base/API.h"
#include "tavlen/foundation/base/FunctionRef.h"
#include "tavlen/foundation/toml/TOMLError.h"
#include "tavlen/tweaktext/TweakText.h"

namespace tavlen {

/// Reads a tweak from the text of a tweak.toml. Unknown keys are errors that name the nearest known
/// one. Limits: those of readTOML(), and limits::kHooks. Throws the TOMLError at the first place.
/// Threads: any.
TAVLEN_API TweakText readTweakText(std::string_view text);
/// The same, but passes errors to `report`, in the order of their places, and then returns nothing.
/// Reads on after an error, but not within the same value or after a fault in the TOML itself.
TAVLEN_API std::optional<TweakText> readTweakText(std::string_view text,
                                                  FunctionRef<void(const TOMLError&)> report);

}  // namespace tavlen
