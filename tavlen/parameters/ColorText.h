#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "tavlen/foundation/base/API.h"
#include "tavlen/parameters/ScalarParameters.h"

/// Colours as texts: "#ff0000", or "#ff000080" with an opacity.
namespace tavlen {

/// Reads a colour, with digits of either case. Returns nothing for any other text.
TAVLEN_API std::optional<ColorParameter> colorFromText(std::string_view text);

/// The colour in lower case, with the opacity only if it is not 1. Returns nothing for a colour
/// that does not read back to the bit.
TAVLEN_API std::optional<std::string> textFromColor(const ColorParameter& color);

}  // namespace tavlen
