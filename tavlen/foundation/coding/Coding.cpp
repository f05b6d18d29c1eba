#include "tavlen/foundation/coding/Coding.h"

#include <charconv>

namespace tavlen {

std::int64_t wholeNumberFromKey(std::string_view key) {
  std::string_view digits = key;
  // from_chars accepts a minus sign but no plus sign. "+-1" is not a number, so keep its plus sign.
  if (digits.starts_with('+') && !digits.starts_with("+-")) digits.remove_prefix(1);
  std::int64_t value = 0;
  const char* const end = digits.data() + digits.size();
  const auto result = std::from_chars(digits.data(), end, value);
  if (result.ec != std::errc{} || result.ptr != end) {
    throw DecodingError::typeMismatch("a whole number as the key", "\"" + std::string(key) + "\"");
  }
  return value;
}

}  // namespace tavlen
