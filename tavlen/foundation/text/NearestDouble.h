#pragma once

#include <optional>
#include <string_view>

#include "tavlen/foundation/base/API.h"

namespace tavlen {

/// A number's text, rounded to a double.
struct TAVLEN_API NearestDouble {
  double value;
  /// False if the number is finite and not zero, but `value` is an infinity or a zero.
  bool isInRange;
};

/// How a number may be written.
enum class RealForm {
  general,  ///< with or without an exponent: "1", ".5", "-12.5e-3"
  plain,    ///< without an exponent
};

/// Reads all of `text` as a decimal number, or as "inf", "infinity", "nan" or "nan(...)" in upper
/// or lower case; each may have a minus sign. Returns nothing for any other text, such as one with
/// a blank or a plus sign.
TAVLEN_API std::optional<NearestDouble> nearestDouble(std::string_view text,
                                                      RealForm form = RealForm::general);

}  // namespace tavlen
