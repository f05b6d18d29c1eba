#include "tavlen/foundation/json/detail/JSONNumber.h"

#include <charconv>
#include <cmath>
#include <limits>
#include <optional>
#include <string>

#include "tavlen/foundation/coding/CodingError.h"
#include "tavlen/foundation/text/Characters.h"
#include "tavlen/foundation/text/NearestDouble.h"

namespace tavlen {

namespace {

/// The parts of a well-formed number.
struct NumberParts {
  bool negative;
  std::string_view whole;     ///< no leading zero, unless it is "0"
  std::string_view fraction;  ///< empty when it has none
  std::string_view exponent;  ///< with its sign; empty when it has none
};

std::string_view takeDigits(std::string_view& rest) {
  std::size_t count = 0;
  while (count < rest.size() && isDigit(rest[count])) ++count;
  const std::string_view digits = rest.substr(0, count);
  rest.remove_prefix(count);
  return digits;
}

std::optional<NumberParts> split(std::string_view token) {
  NumberParts parts{};
  parts.negative = token.starts_with('-');
  if (parts.negative) token.remove_prefix(1);
  parts.whole = takeDigits(token);
  if (parts.whole.empty() || (parts.whole.size() > 1 && parts.whole[0] == '0')) return std::nullopt;
  if (token.starts_with('.')) {
    token.remove_prefix(1);
    parts.fraction = takeDigits(token);
    if (parts.fraction.empty()) return std::nullopt;
  }
  if (token.starts_with('e') || token.starts_with('E')) {
    token.remove_prefix(1);
    const std::string_view begin = token;
    if (token.starts_with('+') || token.starts_with('-')) token.remove_prefix(1);
    const std::string_view digits = takeDigits(token);
    if (digits.empty()) return std::nullopt;
    parts.exponent = begin.substr(0, begin.size() - token.size());
  }
  if (!token.empty()) return std::nullopt;
  return parts;
}

[[noreturn]] void failMalformed(std::string_view token) {
  throw DecodingError::dataCorrupted("malformed number " + std::string(token));
}

[[noreturn]] void failRange(std::string_view token, std::string_view type) {
  throw DecodingError::dataCorrupted("number " + std::string(token) + " does not fit " +
                                     std::string(type));
}

/// The value of the exponent, clamped to a range beyond that of doubles and integers.
long exponentOf(const NumberParts& parts) {
  constexpr long kBeyondEverything = 1'000'000'000;
  std::string_view text = parts.exponent;
  if (text.empty()) return 0;
  const bool negative = text[0] == '-';
  if (text[0] == '-' || text[0] == '+') text.remove_prefix(1);
  long value = 0;
  if (std::from_chars(text.data(), text.data() + text.size(), value).ec != std::errc{} ||
      value > kBeyondEverything) {
    value = kBeyondEverything;
  }
  return negative ? -value : value;
}

/// The integer part of the magnitude. Only for magnitudes below 2^65, which have at most twenty
/// digits.
std::optional<std::uint64_t> truncatedMagnitude(const NumberParts& parts) {
  const long point = static_cast<long>(parts.whole.size()) + exponentOf(parts);
  std::uint64_t value = 0;
  const std::size_t digits = parts.whole.size() + parts.fraction.size();
  for (long i = 0; i < point; ++i) {
    const auto index = static_cast<std::size_t>(i);
    const char c = index < parts.whole.size() ? parts.whole[index]
                   : index < digits           ? parts.fraction[index - parts.whole.size()]
                                              : '0';
    if (__builtin_mul_overflow(value, std::uint64_t{10}, &value) ||
        __builtin_add_overflow(value, static_cast<std::uint64_t>(c - '0'), &value)) {
      return std::nullopt;
    }
  }
  return value;
}

template <class Integer>
Integer integerFromRealText(std::string_view token, std::string_view type) {
  const auto parts = split(token);
  const auto number = nearestDouble(token);
  if (!parts || !number) failMalformed(token);
  const double value = number->value;
  // Both limits as doubles. The upper one is a power of two, just above every value of the type.
  const double upper = std::ldexp(1.0, std::numeric_limits<Integer>::digits);
  const auto lower = static_cast<double>(std::numeric_limits<Integer>::min());
  if (value != std::floor(value) || value >= upper || value < lower) failRange(token, type);
  if (std::fabs(value) < 9007199254740992.0) return static_cast<Integer>(value);
  const auto magnitude = truncatedMagnitude(*parts);
  if (!magnitude) failRange(token, type);
  if (!parts->negative) {
    if (*magnitude > static_cast<std::uint64_t>(std::numeric_limits<Integer>::max()))
      failRange(token, type);
    return static_cast<Integer>(*magnitude);
  }
  if (*magnitude > std::uint64_t{1} << 63) failRange(token, type);
  return static_cast<Integer>(std::uint64_t{0} - *magnitude);
}

template <class Integer>
Integer integerFromText(std::string_view token, std::string_view type) {
  Integer value = 0;
  const char* end = token.data() + token.size();
  const auto result = std::from_chars(token.data(), end, value);
  const std::size_t sign = token.starts_with('-') ? 1 : 0;
  const bool leadingZero = token.size() > sign + 1 && token[sign] == '0';
  if (result.ec == std::errc{} && result.ptr == end && !leadingZero) return value;
  return integerFromRealText<Integer>(token, type);
}

}  // namespace

std::int64_t int64FromJSONNumber(std::string_view token) {
  return integerFromText<std::int64_t>(token, "a signed 64-bit integer");
}

std::uint64_t uint64FromJSONNumber(std::string_view token) {
  return integerFromText<std::uint64_t>(token, "an unsigned 64-bit integer");
}

double doubleFromJSONNumber(std::string_view token) {
  const auto number = nearestDouble(token);
  if (!split(token) || !number) failMalformed(token);
  if (!number->isInRange) failRange(token, "a 64-bit float");
  return number->value;
}

}  // namespace tavlen
