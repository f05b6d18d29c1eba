#include "tavlen/foundation/text/NearestDouble.h"

#include <fast_float/fast_float.h>

#include <cmath>
#include <system_error>

#include "tavlen/foundation/text/Characters.h"

namespace tavlen {

namespace {

/// Whether a number was rounded to an infinity, which otherwise has a name and no digits, or to a
/// zero, which otherwise has only zeros before its exponent.
bool isRoundedAway(std::string_view text, double value) {
  if (value != 0 && !std::isinf(value)) return false;
  const std::size_t first = text.find_first_of(value == 0 ? "123456789eE" : "0123456789");
  return first != std::string_view::npos && isDigit(text[first]);
}

}  // namespace

std::optional<NearestDouble> nearestDouble(std::string_view text, RealForm form) {
  // The C++ libraries of devices have no std::from_chars() for real numbers.
  double value = 0;
  const char* const end = text.data() + text.size();
  const auto [stop, error] = fast_float::from_chars(
      text.data(), end, value, form == RealForm::plain ? fast_float::fixed : fast_float::general);
  // Newer versions of the library also report a number out of range, but still round it.
  if (stop != end || error == std::errc::invalid_argument) return std::nullopt;
  return NearestDouble{value, !isRoundedAway(text, value)};
}

}  // namespace tavlen
