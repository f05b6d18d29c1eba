#include "tavlen/foundation/json/JSONEncoder.h"

#include <algorithm>
#include <array>
#include <bit>
#include <charconv>
#include <cmath>
#include <cstring>

#include "tavlen/foundation/errors/MainBundle.h"
#include "tavlen/foundation/errors/Placeholders.h"
#include "tavlen/foundation/text/NumberText.h"
#include "tavlen/foundation/text/Unicode.h"

namespace tavlen {

namespace {

/// The number of elements of a long array that are measured to estimate its size.
constexpr std::size_t kSampledElements = 32;

constexpr std::uint64_t kOnes = 0x0101010101010101;
constexpr std::uint64_t kHighs = 0x8080808080808080;

/// Sets the high bit of each byte of `word` that must be escaped, and possibly of bytes above such
/// a byte, so only the lowest mark is reliable. A subtraction borrows into the high bit of an ASCII
/// byte that is less than the subtrahend.
constexpr std::uint64_t bytesToEscape(std::uint64_t word) {
  const std::uint64_t borrows = ((word ^ (kOnes * '"')) - kOnes) |
                                ((word ^ (kOnes * '\\')) - kOnes) |
                                ((word ^ (kOnes * '/')) - kOnes) | (word - kOnes * 0x20);
  return borrows & ~word & kHighs;
}

constexpr bool needsEscape(char c) {
  return static_cast<unsigned char>(c) < 0x20 || c == '"' || c == '\\' || c == '/';
}

template <class Word>
std::uint64_t wordAt(const char* bytes) {
  Word word = 0;
  std::memcpy(&word, bytes, sizeof word);
  return word;
}

/// Loads the `count` bytes at `bytes`, one to seven, padded with spaces at the top. Overlapping
/// loads take fewer steps than a load for each byte.
std::uint64_t shortWord(const char* bytes, std::size_t count) {
  std::uint64_t word = (kOnes * ' ') << (8 * count);
  if (count >= 4) {
    return word | wordAt<std::uint32_t>(bytes) |
           wordAt<std::uint32_t>(bytes + count - 4) << (8 * (count - 4));
  }
  for (const std::size_t i : {std::size_t{0}, count / 2, count - 1})
    word |= wordAt<std::uint8_t>(bytes + i) << (8 * i);
  return word;
}

/// The position of the first byte at or after `i` that must be escaped. Bytes passed over are ORed
/// into `highBits`.
std::size_t nextEscape(std::string_view text, std::size_t i, std::uint64_t& highBits) {
  if constexpr (std::endian::native == std::endian::little) {
    std::uint64_t escapes = 0;
    for (; i + 8 <= text.size(); i += 8) {
      const auto word = wordAt<std::uint64_t>(text.data() + i);
      highBits |= word;
      escapes = bytesToEscape(word);
      if (escapes != 0) return i + static_cast<std::size_t>(std::countr_zero(escapes)) / 8;
    }
    if (i == text.size()) return i;
    const std::uint64_t word = shortWord(text.data() + i, text.size() - i);
    highBits |= word;
    escapes = bytesToEscape(word);
    return escapes == 0 ? text.size() : i + static_cast<std::size_t>(std::countr_zero(escapes)) / 8;
  }
  for (; i < text.size() && !needsEscape(text[i]); ++i)
    highBits |= static_cast<unsigned char>(text[i]);
  return i;
}

void appendEscape(std::string& out, char c) {
  constexpr std::string_view kHex = "0123456789abcdef";
  switch (c) {
    case '"':
      out += "\\\"";
      return;
    case '\\':
      out += "\\\\";
      return;
    case '/':
      out += "\\/";
      return;
    case '\b':
      out += "\\b";
      return;
    case '\t':
      out += "\\t";
      return;
    case '\n':
      out += "\\n";
      return;
    case '\f':
      out += "\\f";
      return;
    case '\r':
      out += "\\r";
      return;
    default:
      break;
  }
  const auto byte = static_cast<unsigned char>(c);
  out += "\\u00";
  out += kHex[byte >> 4];
  out += kHex[byte & 0xF];
}

[[noreturn]] void failToRepresent(std::string_view text) {
  const std::array<std::string, 1> shown = {wellFormedUTF8(text)};
  throw EncodingError::invalidValue(fillPlaceholders(
      MainBundle::localizedString({"encodable.to_json.error", "Could not represent %@ as JSON"}),
      shown));
}

template <class Integer>
void appendInteger(std::string& out, Integer value) {
  std::array<char, 20> digits;
  const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), value).ptr;
  out.append(digits.data(), end);
}

}  // namespace

void appendJSONString(std::string& out, std::string_view text) {
  std::uint64_t highBits = 0;
  out += '"';
  for (std::size_t i = 0;;) {
    const std::size_t escape = nextEscape(text, i, highBits);
    out.append(text.data() + i, escape - i);
    if (escape == text.size()) break;
    appendEscape(out, text[escape]);
    i = escape + 1;
  }
  out += '"';
  if ((highBits & kHighs) != 0 && !isValidUTF8(text)) failToRepresent(text);
}

void JSONEncoder::beginValue() {
  if (++values_ > limits::kJSONValues && isWhole()) {
    throw EncodingError::invalidValue("more than " + std::to_string(limits::kJSONValues) +
                                      " values");
  }
  separate();
}

void JSONEncoder::separate() {
  if (depth_ == sample_.depth && depth_ != 0 && sample_.elementsLeft-- == 0) reserveForArray();
  if (out_.size() >= fullSize_) passPiece();
  if (!first_) out_ += ',';
  first_ = false;
}

void JSONEncoder::passPiece() {
  receive_(out_);
  out_.clear();
}

/// Reserves memory for the rest of the array. A text that grows by doubling is copied about twice
/// over, and the page faults of this cost more than the encoding itself.
void JSONEncoder::reserveForArray() {
  // Limits the damage when the first elements are much longer than the rest.
  constexpr std::size_t kMostAtOnce = std::size_t{16} << 20;
  const std::size_t perElement = (out_.size() - sample_.begin) / kSampledElements + 1;
  const std::size_t estimate = perElement * sample_.elementsAfter / 8 * 9;
  out_.reserve(out_.size() + std::min(estimate, kMostAtOnce));
  sample_ = {};
}

void JSONEncoder::begin(char bracket) {
  beginValue();
  if (++depth_ > kMaximumDepth) {
    throw EncodingError::invalidValue("nested deeper than " + std::to_string(kMaximumDepth) +
                                      " containers");
  }
  out_ += bracket;
  first_ = true;
}

void JSONEncoder::end(char bracket) {
  out_ += bracket;
  --depth_;
  first_ = false;
}

void JSONEncoder::beginRecord() { begin('{'); }

void JSONEncoder::key(std::string_view key) {
  separate();
  appendJSONString(out_, key);
  out_ += ':';
  first_ = true;
}

void JSONEncoder::endRecord() { end('}'); }

void JSONEncoder::beginArray(std::size_t count) {
  begin('[');
  if (count >= 4 * kSampledElements && sample_.depth == 0 && isWhole())
    sample_ = {depth_, out_.size(), kSampledElements, count - kSampledElements};
}

void JSONEncoder::endArray() { end(']'); }

void JSONEncoder::null() {
  beginValue();
  out_ += "null";
}

void JSONEncoder::boolean(bool value) {
  beginValue();
  out_ += value ? "true" : "false";
}

void JSONEncoder::integer(std::int64_t value) {
  beginValue();
  appendInteger(out_, value);
}

void JSONEncoder::unsignedInteger(std::uint64_t value) {
  beginValue();
  appendInteger(out_, value);
}

void JSONEncoder::real(double value) {
  beginValue();
  if (!std::isfinite(value)) {
    std::string name = "Double.";
    appendDescription(name, value);
    throw EncodingError::invalidValue("Unable to encode " + name + " directly in JSON.");
  }
  appendNumber(out_, value);
}

void JSONEncoder::string(std::string_view value) {
  beginValue();
  appendJSONString(out_, value);
}

void JSONEncoder::date(Date value) { real(value.secondsSinceReferenceDate); }

}  // namespace tavlen
