#include "tavlen/foundation/text/NumberText.h"

#include <dragonbox/dragonbox.h>

#include <algorithm>
#include <array>
#include <bit>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <string_view>

namespace tavlen {

namespace {

constexpr double kLargestDecimal =
    9007199254740992.0;  // 2^53: above it, neighbours differ by more than one

/// A number's shortest digits, and the decimal exponent of the first.
struct ShortestDigits {
  std::array<char, 17> digits;
  std::size_t count;
  int exponent;

  std::string_view view() const { return {digits.data(), count}; }
};

std::size_t writeDigits(std::array<char, 17>& digits, std::uint64_t number) {
  const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), number).ptr;
  return static_cast<std::size_t>(end - digits.data());
}

/// Finds the digits of a number that has at most fifteen of them, up to six after the point: the
/// numbers that people write. Two decimals of up to fifteen digits never round to the same double,
/// so one that divides back to the value is its shortest text. This costs half of the general
/// algorithm.
bool findFewDigits(double magnitude, ShortestDigits& result) {
  constexpr int kPlaces = 6;
  constexpr double kScale = 1e6;
  if (magnitude < 1e-4 || magnitude >= 1e9) return false;
  const auto scaled = std::llround(magnitude * kScale);
  if (static_cast<double>(scaled) / kScale != magnitude) return false;
  result.count = writeDigits(result.digits, static_cast<std::uint64_t>(scaled));
  result.exponent = static_cast<int>(result.count) - 1 - kPlaces;
  while (result.count > 1 && result.digits[result.count - 1] == '0') --result.count;
  return true;
}

/// `magnitude` must be positive.
ShortestDigits shortestDigits(double magnitude) {
  ShortestDigits result{};
  if (findFewDigits(magnitude, result)) return result;
  // Older C++ libraries of devices have no std::to_chars() for real numbers.
  const auto decimal = jkj::dragonbox::to_decimal(magnitude, jkj::dragonbox::policy::sign::ignore);
  result.count = writeDigits(result.digits, decimal.significand);
  result.exponent = decimal.exponent + static_cast<int>(result.count) - 1;
  return result;
}

char* write(char* to, std::string_view text) { return to + text.copy(to, text.size()); }

char* writeDecimal(char* to, const ShortestDigits& number) {
  const std::string_view digits = number.view();
  if (number.exponent < 0) {
    *to++ = '0';
    *to++ = '.';
    return write(std::fill_n(to, -number.exponent - 1, '0'), digits);
  }
  const auto whole = static_cast<std::size_t>(number.exponent) + 1;
  if (digits.size() <= whole) {
    to = std::fill_n(write(to, digits), whole - digits.size(), '0');
    return write(to, ".0");
  }
  to = write(to, digits.substr(0, whole));
  *to++ = '.';
  return write(to, digits.substr(whole));
}

char* writeExponential(char* to, const ShortestDigits& number) {
  const std::string_view digits = number.view();
  *to++ = digits[0];
  if (digits.size() > 1) {
    *to++ = '.';
    to = write(to, digits.substr(1));
  }
  to = write(to, number.exponent < 0 ? "e-" : "e+");
  const int magnitude = std::abs(number.exponent);
  if (magnitude < 10) *to++ = '0';
  return std::to_chars(to, to + 3, magnitude).ptr;
}

char* writeNaN(char* to, double value) {
  const auto bits = std::bit_cast<std::uint64_t>(value);
  constexpr std::uint64_t kQuiet = 1ULL << 51;
  const std::uint64_t payload = bits & (kQuiet - 1);
  if (std::signbit(value)) *to++ = '-';
  if ((bits & kQuiet) == 0) *to++ = 's';
  to = write(to, "nan");
  if (payload == 0 || (bits & kQuiet) == 0) return to;
  to = write(to, "(0x");
  to = std::to_chars(to, to + 16, payload, 16).ptr;
  *to++ = ')';
  return to;
}

}  // namespace

char* writeDescription(char* to, double value) {
  if (std::isnan(value)) return writeNaN(to, value);
  if (std::signbit(value)) *to++ = '-';
  const double magnitude = std::fabs(value);
  if (std::isinf(value)) return write(to, "inf");
  if (magnitude == 0) return write(to, "0.0");
  const ShortestDigits number = shortestDigits(magnitude);
  const bool isDecimal = number.exponent >= -4 && magnitude <= kLargestDecimal;
  return isDecimal ? writeDecimal(to, number) : writeExponential(to, number);
}

char* writeNumber(char* to, double value) {
  char* const end = writeDescription(to, value);
  return std::string_view(to, end).ends_with(".0") ? end - 2 : end;
}

void appendDescription(std::string& out, double value) {
  std::array<char, kMostNumberBytes> text;
  out.append(text.data(), writeDescription(text.data(), value));
}

void appendNumber(std::string& out, double value) {
  std::array<char, kMostNumberBytes> text;
  out.append(text.data(), writeNumber(text.data(), value));
}

void appendFraction(std::string& out, double value) {
  const ShortestDigits number = shortestDigits(value);
  out += '.';
  out.append(static_cast<std::size_t>(-number.exponent - 1), '0');
  out += number.view();
}

}  // namespace tavlen
