#include "tavlen/foundation/text/NumberText.h"

#include <dragonbox/dragonbox.h>

#include <array>
#include <bit>
#include <charconv>
#include <cmath>
#include <cstdint>
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
  static constexpr std::array<double, 7> kPowers = {1e0, 1e1, 1e2, 1e3, 1e4, 1e5, 1e6};
  if (magnitude < 1e-4 || magnitude >= 1e9) return false;
  for (std::size_t places = 0; places < kPowers.size(); ++places) {
    const double scaled = std::round(magnitude * kPowers[places]);
    if (scaled / kPowers[places] != magnitude) continue;
    result.count = writeDigits(result.digits, static_cast<std::uint64_t>(scaled));
    result.exponent = static_cast<int>(result.count) - 1 - static_cast<int>(places);
    while (result.count > 1 && result.digits[result.count - 1] == '0') --result.count;
    return true;
  }
  return false;
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

/// Appends the part after the zero of a number below 1.
void appendBelowOne(std::string& out, const ShortestDigits& number) {
  out += '.';
  out.append(static_cast<std::size_t>(-number.exponent - 1), '0');
  out += number.view();
}

void appendDecimal(std::string& out, const ShortestDigits& number) {
  const std::string_view digits = number.view();
  if (number.exponent < 0) {
    out += '0';
    return appendBelowOne(out, number);
  }
  const auto whole = static_cast<std::size_t>(number.exponent) + 1;
  if (digits.size() <= whole) {
    out += digits;
    out.append(whole - digits.size(), '0');
    out += ".0";
    return;
  }
  out += digits.substr(0, whole);
  out += '.';
  out += digits.substr(whole);
}

void appendExponential(std::string& out, const ShortestDigits& number) {
  const std::string_view digits = number.view();
  out += digits[0];
  if (digits.size() > 1) {
    out += '.';
    out += digits.substr(1);
  }
  out += number.exponent < 0 ? "e-" : "e+";
  const int magnitude = std::abs(number.exponent);
  if (magnitude < 10) out += '0';
  out += std::to_string(magnitude);
}

void appendNaN(std::string& out, double value) {
  const auto bits = std::bit_cast<std::uint64_t>(value);
  constexpr std::uint64_t kQuiet = 1ULL << 51;
  const std::uint64_t payload = bits & (kQuiet - 1);
  if (std::signbit(value)) out += '-';
  if ((bits & kQuiet) == 0) out += 's';
  out += "nan";
  if (payload == 0 || (bits & kQuiet) == 0) return;
  std::array<char, 16> text;
  const auto end = std::to_chars(text.data(), text.data() + text.size(), payload, 16).ptr;
  out.append("(0x").append(text.data(), end).append(")");
}

}  // namespace

void appendDescription(std::string& out, double value) {
  if (std::isnan(value)) return appendNaN(out, value);
  if (std::signbit(value)) out += '-';
  const double magnitude = std::fabs(value);
  if (std::isinf(value)) {
    out += "inf";
  } else if (magnitude == 0) {
    out += "0.0";
  } else if (const ShortestDigits number = shortestDigits(magnitude);
             number.exponent >= -4 && magnitude <= kLargestDecimal) {
    appendDecimal(out, number);
  } else {
    appendExponential(out, number);
  }
}

void appendNumber(std::string& out, double value) {
  appendDescription(out, value);
  if (out.ends_with(".0")) out.resize(out.size() - 2);
}

void appendFraction(std::string& out, double value) { appendBelowOne(out, shortestDigits(value)); }

}  // namespace tavlen
