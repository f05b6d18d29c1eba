#include "tavlen/foundation/text/Unicode.h"

#include <unicode/utf8.h>

#include <array>
#include <cstdint>
#include <cstring>
#include <utility>

namespace tavlen {

namespace {

constexpr char32_t kReplacement = 0xFFFD;

constexpr bool isHighSurrogate(char32_t unit) { return unit >= 0xD800 && unit <= 0xDBFF; }
constexpr bool isLowSurrogate(char32_t unit) { return unit >= 0xDC00 && unit <= 0xDFFF; }
constexpr bool isSurrogate(char32_t unit) { return unit >= 0xD800 && unit <= 0xDFFF; }

constexpr char32_t joined(char32_t high, char32_t low) {
  return 0x10000 + ((high - 0xD800) << 10) + (low - 0xDC00);
}

/// Reads the character at `position` and advances. Returns a negative value for a malformed
/// sequence, whose length is that of the longest prefix that could have begun a character.
UChar32 nextUTF8(std::string_view text, std::size_t& position) {
  const auto* bytes = reinterpret_cast<const std::uint8_t*>(text.data());
  UChar32 codePoint = 0;
  U8_NEXT(bytes, position, text.size(), codePoint);
  return codePoint;
}

/// Reads a unit of `Size` bytes. `BigEndian` is a template parameter to keep the branch out of the
/// loop.
template <std::size_t Size, bool BigEndian>
char32_t unitAt(std::string_view bytes, std::size_t position) {
  char32_t unit = 0;
  for (std::size_t i = 0; i < Size; ++i) {
    const std::size_t index = BigEndian ? i : Size - 1 - i;
    unit = (unit << 8) | static_cast<unsigned char>(bytes[position + index]);
  }
  return unit;
}

template <bool BigEndian>
bool convertUTF16(std::string_view bytes, std::string& out) {
  if (bytes.size() % 2 != 0) return false;
  for (std::size_t i = 0; i < bytes.size(); i += 2) {
    char32_t unit = unitAt<2, BigEndian>(bytes, i);
    if (isSurrogate(unit)) {
      if (!isHighSurrogate(unit) || i + 2 >= bytes.size()) return false;
      const char32_t low = unitAt<2, BigEndian>(bytes, i + 2);
      if (!isLowSurrogate(low)) return false;
      unit = joined(unit, low);
      i += 2;
    }
    appendUTF8(out, unit);
  }
  return true;
}

template <bool BigEndian>
bool convertUTF32(std::string_view bytes, std::string& out) {
  if (bytes.size() % 4 != 0) return false;
  for (std::size_t i = 0; i < bytes.size(); i += 4) {
    const char32_t unit = unitAt<4, BigEndian>(bytes, i);
    if (isSurrogate(unit) || unit > 0x10FFFF) return false;
    appendUTF8(out, unit);
  }
  return true;
}

}  // namespace

bool isASCII(std::string_view text) {
  // No early exit, so that the compiler vectorises the loop.
  unsigned char all = 0;
  for (const char byte : text) all |= static_cast<unsigned char>(byte);
  return all < 0x80;
}

bool isValidUTF8(std::string_view text) { return validUTF8Length(text) == text.size(); }

std::size_t validUTF8Length(std::string_view text) {
  constexpr std::uint64_t kHighBits = 0x8080808080808080;
  std::size_t position = 0;
  while (position < text.size()) {
    if (std::array<std::uint64_t, 2> block; text.size() - position >= sizeof block) {
      std::memcpy(block.data(), text.data() + position, sizeof block);
      if (((block[0] | block[1]) & kHighBits) == 0) {
        position += sizeof block;
        continue;
      }
    }
    const std::size_t begin = position;
    if (nextUTF8(text, position) < 0) return begin;
  }
  return position;
}

std::string wellFormedUTF8(std::string_view text) {
  return isValidUTF8(text) ? std::string(text) : utf8FromUTF16(utf16FromUTF8(text));
}

std::u16string utf16FromUTF8(std::string_view text) {
  std::u16string out;
  out.reserve(text.size());
  for (std::size_t i = 0; i < text.size();) {
    const UChar32 next = nextUTF8(text, i);
    const char32_t codePoint = next < 0 ? kReplacement : static_cast<char32_t>(next);
    if (codePoint < 0x10000) {
      out.push_back(static_cast<char16_t>(codePoint));
    } else {
      out.push_back(static_cast<char16_t>(0xD800 + ((codePoint - 0x10000) >> 10)));
      out.push_back(static_cast<char16_t>(0xDC00 + ((codePoint - 0x10000) & 0x3FF)));
    }
  }
  return out;
}

std::string utf8FromUTF16(std::u16string_view text) {
  std::string out;
  out.reserve(text.size());
  for (std::size_t i = 0; i < text.size(); ++i) {
    const auto unit = static_cast<char32_t>(text[i]);
    if (!isSurrogate(unit)) {
      appendUTF8(out, unit);
    } else if (isHighSurrogate(unit) && i + 1 < text.size() &&
               isLowSurrogate(static_cast<char32_t>(text[i + 1]))) {
      appendUTF8(out, joined(unit, static_cast<char32_t>(text[++i])));
    } else {
      appendUTF8(out, kReplacement);
    }
  }
  return out;
}

void appendUTF8(std::string& out, char32_t codePoint) {
  const auto push = [&](char32_t byte) { out.push_back(static_cast<char>(byte)); };
  if (codePoint < 0x80) {
    push(codePoint);
  } else if (codePoint < 0x800) {
    push(0xC0 | (codePoint >> 6));
    push(0x80 | (codePoint & 0x3F));
  } else if (codePoint < 0x10000) {
    push(0xE0 | (codePoint >> 12));
    push(0x80 | ((codePoint >> 6) & 0x3F));
    push(0x80 | (codePoint & 0x3F));
  } else {
    push(0xF0 | (codePoint >> 18));
    push(0x80 | ((codePoint >> 12) & 0x3F));
    push(0x80 | ((codePoint >> 6) & 0x3F));
    push(0x80 | (codePoint & 0x3F));
  }
}

std::optional<ByteOrderMark> byteOrderMarkOf(std::string_view bytes) {
  using namespace std::string_view_literals;
  using enum TextEncoding;
  // Four-byte marks first: one of them begins with a two-byte mark.
  constexpr std::array<std::pair<std::string_view, TextEncoding>, 5> kMarks = {{
      {"\xFF\xFE\0\0"sv, utf32LittleEndian},
      {"\0\0\xFE\xFF"sv, utf32BigEndian},
      {"\xEF\xBB\xBF"sv, utf8},
      {"\xFF\xFE"sv, utf16LittleEndian},
      {"\xFE\xFF"sv, utf16BigEndian},
  }};
  for (const auto& [mark, encoding] : kMarks) {
    if (bytes.starts_with(mark)) return ByteOrderMark{encoding, mark.size()};
  }
  return std::nullopt;
}

bool convertToUTF8(std::string_view bytes, TextEncoding encoding, std::string& out) {
  out.clear();
  switch (encoding) {
    case TextEncoding::utf8:
      if (!isValidUTF8(bytes)) return false;
      out = bytes;
      return true;
    case TextEncoding::utf16LittleEndian:
      return convertUTF16<false>(bytes, out);
    case TextEncoding::utf16BigEndian:
      return convertUTF16<true>(bytes, out);
    case TextEncoding::utf32LittleEndian:
      return convertUTF32<false>(bytes, out);
    case TextEncoding::utf32BigEndian:
      return convertUTF32<true>(bytes, out);
  }
  return false;
}

std::optional<std::string> textFromBytes(std::string_view bytes) {
  const ByteOrderMark mark = byteOrderMarkOf(bytes).value_or(ByteOrderMark{TextEncoding::utf8, 0});
  std::string text;
  if (!convertToUTF8(bytes.substr(mark.length), mark.encoding, text)) return std::nullopt;
  return text;
}

}  // namespace tavlen
