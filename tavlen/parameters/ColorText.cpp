#include "tavlen/parameters/ColorText.h"

#include <array>
#include <charconv>
#include <cmath>
#include <cstddef>

namespace tavlen {

namespace {

constexpr double kMostOfByte = 255;

/// Appends the digits of a component; returns whether two can express it.
bool appendByte(std::string& out, double component) {
  const bool isByte = component >= 0 && component <= 1 && !std::signbit(component) &&
                      std::round(component * kMostOfByte) / kMostOfByte == component;
  if (!isByte) return false;
  constexpr std::string_view kDigits = "0123456789abcdef";
  const auto byte = static_cast<std::size_t>(std::lround(component * kMostOfByte));
  out += kDigits[byte / 16];
  out += kDigits[byte % 16];
  return true;
}

}  // namespace

std::optional<ColorParameter> colorFromText(std::string_view text) {
  constexpr std::size_t kOpaque = 7;
  constexpr std::size_t kWithAlpha = 9;
  if (!text.starts_with('#') || (text.size() != kOpaque && text.size() != kWithAlpha))
    return std::nullopt;
  std::array<double, 4> components = {0, 0, 0, 1};
  for (std::size_t i = 0; i < text.size() / 2; ++i) {
    unsigned byte = 0;
    const char* digits = text.data() + 1 + 2 * i;
    if (std::from_chars(digits, digits + 2, byte, 16).ptr != digits + 2) return std::nullopt;
    components[i] = byte / kMostOfByte;
  }
  return ColorParameter{components[0], components[1], components[2], components[3]};
}

std::optional<std::string> textFromColor(const ColorParameter& color) {
  std::string text = "#";
  for (const double component : {color.red, color.green, color.blue}) {
    if (!appendByte(text, component)) return std::nullopt;
  }
  if (color.alpha != 1 && !appendByte(text, color.alpha)) return std::nullopt;
  return text;
}

}  // namespace tavlen
