#include "tavlen/foundation/text/Base64.h"

#include <array>
#include <cstdint>

namespace tavlen {

namespace {

constexpr std::string_view kAlphabet =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
constexpr std::uint8_t kNoDigit = 64;

constexpr auto kDigits = [] {
  std::array<std::uint8_t, 256> digits{};
  digits.fill(kNoDigit);
  for (std::size_t i = 0; i < kAlphabet.size(); ++i) {
    digits[static_cast<unsigned char>(kAlphabet[i])] = static_cast<std::uint8_t>(i);
  }
  return digits;
}();

}  // namespace

std::string base64FromBytes(std::string_view bytes) {
  std::string text;
  text.reserve((bytes.size() + 2) / 3 * 4);
  for (std::size_t i = 0; i < bytes.size(); i += 3) {
    const auto byte = [&](std::size_t at) -> std::uint32_t {
      return at < bytes.size() ? static_cast<unsigned char>(bytes[at]) : 0;
    };
    const std::uint32_t group = byte(i) << 16 | byte(i + 1) << 8 | byte(i + 2);
    text += kAlphabet[group >> 18];
    text += kAlphabet[group >> 12 & 63];
    text += i + 1 < bytes.size() ? kAlphabet[group >> 6 & 63] : '=';
    text += i + 2 < bytes.size() ? kAlphabet[group & 63] : '=';
  }
  return text;
}

std::optional<std::string> bytesFromBase64(std::string_view text, Base64Blanks blanks) {
  std::string bytes;
  bytes.reserve(text.size() / 4 * 3);
  std::uint32_t group = 0;
  std::size_t digits = 0;
  std::size_t padding = 0;
  for (const char c : text) {
    if (blanks == Base64Blanks::skipped && (c == ' ' || c == '\t' || c == '\n' || c == '\r')) {
      continue;
    }
    if (c == '=') {
      ++padding;
      continue;
    }
    const std::uint8_t digit = kDigits[static_cast<unsigned char>(c)];
    if (digit == kNoDigit || padding != 0) return std::nullopt;
    group = group << 6 | digit;
    ++digits;
    if (digits % 4 != 0) continue;
    for (const unsigned shift : {16U, 8U, 0U}) bytes += static_cast<char>(group >> shift & 0xFF);
    group = 0;
  }
  const std::size_t rest = digits % 4;
  if (rest == 1 || padding != (rest == 0 ? 0 : 4 - rest)) return std::nullopt;
  if (rest >= 2) bytes += static_cast<char>(group >> (rest == 2 ? 4 : 10) & 0xFF);
  if (rest == 3) bytes += static_cast<char>(group >> 2 & 0xFF);
  return bytes;
}

std::optional<std::uint8_t> valueOfBase64Digit(char digit) {
  const std::uint8_t value = kDigits[static_cast<unsigned char>(digit)];
  if (value == kNoDigit) return std::nullopt;
  return value;
}

}  // namespace tavlen
