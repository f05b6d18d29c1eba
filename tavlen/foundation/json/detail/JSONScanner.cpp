#include "tavlen/foundation/json/detail/JSONScanner.h"

#include <array>
#include <bit>
#include <cstdint>
#include <cstring>

#include "tavlen/foundation/base/Limits.h"
#include "tavlen/foundation/coding/CodingError.h"
#include "tavlen/foundation/text/Characters.h"
#include "tavlen/foundation/text/Unicode.h"

namespace tavlen {

namespace {

constexpr std::uint64_t kOnes = 0x0101010101010101;
constexpr std::uint64_t kHighs = 0x8080808080808080;

/// Sets the high bit of each byte of `word` that ends plain text (quotation marks, backslashes,
/// control characters), and possibly of bytes above such a byte, so only the lowest mark is
/// reliable. A subtraction borrows into the high bit of an ASCII byte that is less than the
/// subtrahend.
constexpr std::uint64_t plainTextEnds(std::uint64_t word) {
  const std::uint64_t borrows =
      ((word ^ (kOnes * '"')) - kOnes) | ((word ^ (kOnes * '\\')) - kOnes) | (word - kOnes * 0x20);
  return borrows & ~word & kHighs;
}

constexpr bool endsPlainText(char c) {
  return c == '"' || c == '\\' || static_cast<unsigned char>(c) < 0x20;
}

constexpr bool isNumberCharacter(char c) {
  return isDigit(c) || c == '+' || c == '-' || c == '.' || c == 'e' || c == 'E';
}

constexpr char closingFor(char opening) { return opening == '{' ? '}' : ']'; }

}  // namespace

JSONScanner::JSONScanner(std::string_view text)
    : begin_(text.data()), position_(text.data()), end_(text.data() + text.size()) {}

void JSONScanner::failForDepth() const {
  fail("nested deeper than " + std::to_string(limits::kJSONDepth) + " containers");
}

void JSONScanner::failForEnd() const {
  fail(position_ == end_ || *position_ == '\0' ? "unexpected end"
                                               : "expected a comma or the container's end");
}

std::string_view JSONScanner::key(std::string& storage) {
  if (peek() != '"') fail("expected a key");
  lastKey_ = position_;
  const std::string_view text = stringView(storage);
  if (peek() != ':') fail("expected a colon");
  ++position_;
  return text;
}

const char* JSONScanner::endOfPlainText(const char* from) const {
  if constexpr (std::endian::native == std::endian::little) {
    for (; end_ - from >= 8; from += 8) {
      std::uint64_t word = 0;
      std::memcpy(&word, from, sizeof word);
      const std::uint64_t ends = plainTextEnds(word);
      if (ends != 0) return from + std::countr_zero(ends) / 8;
    }
  }
  while (from != end_ && !endsPlainText(*from)) ++from;
  return from;
}

std::string_view JSONScanner::stringView(std::string& storage) {
  const char* const begin = position_ + 1;
  const char* const end = endOfPlainText(begin);
  if (end != end_ && *end == '"') {
    position_ = end + 1;
    return {begin, static_cast<std::size_t>(end - begin)};
  }
  string(storage);
  return storage;
}

void JSONScanner::string(std::string& out) {
  const char* const begin = position_ + 1;
  position_ = endOfPlainText(begin);
  out.assign(begin, position_);
  while (position_ != end_ && *position_ == '\\') {
    ++position_;
    unescape(out);
    const char* const plain = position_;
    position_ = endOfPlainText(plain);
    out.append(plain, position_);
  }
  if (position_ == end_) fail("unterminated string");
  if (*position_ != '"') fail("control character in a string");
  ++position_;
}

void JSONScanner::unescape(std::string& out) {
  if (position_ == end_) fail("unterminated string");
  switch (*position_++) {
    case '"':
      out += '"';
      return;
    case '\\':
      out += '\\';
      return;
    case '/':
      out += '/';
      return;
    case 'b':
      out += '\b';
      return;
    case 'f':
      out += '\f';
      return;
    case 'n':
      out += '\n';
      return;
    case 'r':
      out += '\r';
      return;
    case 't':
      out += '\t';
      return;
    case 'u':
      appendUTF8(out, unicodeEscape());
      return;
    default:
      fail("unknown escape in a string");
  }
}

char32_t JSONScanner::unicodeEscape() {
  const char32_t unit = fourHexDigits();
  if (unit < 0xD800 || unit > 0xDFFF) return unit;
  if (unit > 0xDBFF || end_ - position_ < 2 || position_[0] != '\\' || position_[1] != 'u') {
    fail("lone surrogate in a string");
  }
  position_ += 2;
  const char32_t low = fourHexDigits();
  if (low < 0xDC00 || low > 0xDFFF) fail("lone surrogate in a string");
  return 0x10000 + ((unit - 0xD800) << 10) + (low - 0xDC00);
}

char32_t JSONScanner::fourHexDigits() {
  char32_t value = 0;
  for (int i = 0; i < 4; ++i) {
    const char c = position_ == end_ ? '\0' : *position_;
    char32_t digit = 0;
    if (isDigit(c)) {
      digit = static_cast<char32_t>(c - '0');
    } else if ((c | 0x20) >= 'a' && (c | 0x20) <= 'f') {
      digit = static_cast<char32_t>((c | 0x20) - 'a' + 10);
    } else {
      fail("malformed escape in a string");
    }
    value = value << 4 | digit;
    ++position_;
  }
  return value;
}

std::string_view JSONScanner::number() {
  const char* const begin = position_;
  while (position_ != end_ && isNumberCharacter(*position_)) ++position_;
  return {begin, static_cast<std::size_t>(position_ - begin)};
}

void JSONScanner::literal(std::string_view word) {
  if (!std::string_view(position_, static_cast<std::size_t>(end_ - position_)).starts_with(word)) {
    fail("unexpected character");
  }
  position_ += word.size();
}

const char* JSONScanner::endOfSkippedString(const char* from) const {
  from = endOfPlainText(from + 1);
  while (from != end_ && *from != '"') {
    // Control characters are not refused in strings that are skipped.
    from += *from == '\\' && end_ - from > 1 ? 2 : 1;
    from = endOfPlainText(from);
  }
  return from;
}

void JSONScanner::skipScalar(char first) {
  switch (first) {
    case '"':
      position_ = endOfSkippedString(position_);
      if (position_ == end_) fail("unterminated string");
      ++position_;
      return;
    case 't':
      return literal("true");
    case 'f':
      return literal("false");
    case 'n':
      return literal("null");
    case '\0':
      if (position_ == end_) fail("unexpected end");
      [[fallthrough]];
    default:
      if (first != '-' && !isDigit(first)) fail("unexpected character");
      number();
  }
}

void JSONScanner::skipValue(Again again) {
  const char first = peek();
  if (first == '{' || first == '[') {
    skipContainer(first, again);
  } else {
    skipScalar(first);
  }
}

void JSONScanner::skipContainer(char opening, Again again) {
  if (const auto known = skippedContainers_.find(position_); known != skippedContainers_.end()) {
    position_ = known->second;
    return;
  }
  // The opening brackets of the containers entered and not yet left: a stack, so that depth costs
  // no recursion.
  std::array<const char*, limits::kJSONDepth> openings;
  std::size_t count = 0;
  const auto enter = [&](char bracket) {
    const char* const begin = position_;
    const bool filled = open(closingFor(bracket));  // throws at the depth limit
    if (filled) openings[count++] = begin;
    return filled;
  };
  const auto leave = [&] {
    const char* const begin = openings[--count];
    if (again == Again::yes && position_ - begin > kRememberedLength) {
      skippedContainers_.emplace(begin, position_);
    }
  };

  // Whether the position is at a member or an element; else it is at a comma or a closing bracket.
  bool atMember = enter(opening);
  while (count > 0) {
    const char bracket = *openings[count - 1];
    if (!atMember) {
      atMember = next(closingFor(bracket));
      if (!atMember) leave();
      continue;
    }
    if (bracket == '{') {
      if (peek() != '"') fail("expected a key");
      skipScalar('"');
      if (peek() != ':') fail("expected a colon");
      ++position_;
    }
    const char first = peek();
    if (first == '{' || first == '[') {
      atMember = enter(first);
    } else {
      skipScalar(first);
      atMember = false;
    }
  }
}

TextPosition JSONScanner::textPositionOf(const char* place) const {
  return TextPosition::at({begin_, end_}, static_cast<std::size_t>(place - begin_));
}

void JSONScanner::fail(std::string_view reason) const {
  throw DecodingError::malformedText("The given data was not valid JSON: " + std::string(reason),
                                     textPositionOf(position_));
}

}  // namespace tavlen
