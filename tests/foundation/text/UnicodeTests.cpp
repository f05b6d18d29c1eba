#include "tavlen/foundation/text/Unicode.h"

#include <gtest/gtest.h>

#include <array>
#include <string>
#include <string_view>
#include <utility>

namespace tavlen {
namespace {

using namespace std::string_view_literals;

/// The two bytes of each unit of `text`, or the four of each scalar.
template <class Unit>
std::string bytesOf(std::basic_string_view<Unit> text, bool bigEndian) {
  std::string out;
  for (const Unit unit : text) {
    for (std::size_t i = 0; i < sizeof(Unit); ++i) {
      const std::size_t shift = 8 * (bigEndian ? sizeof(Unit) - 1 - i : i);
      out += static_cast<char>((static_cast<char32_t>(unit) >> shift) & 0xFF);
    }
  }
  return out;
}

TEST(Unicode, EncodingsAgree) {
  // Both ends of every length of UTF-8 and of the surrogates' gap.
  constexpr std::u32string_view kScalars =
      U"\0\u007F\u0080\u07FF\u0800\uD7FF\uE000\uFEFF\uFFFF\U00010000\U0001F600\U0010FFFF"sv;
  constexpr std::u16string_view kUnits =
      u"\0\u007F\u0080\u07FF\u0800\uD7FF\uE000\uFEFF\uFFFF\U00010000\U0001F600\U0010FFFF"sv;
  constexpr std::string_view kText =
      "\0\x7F\xC2\x80\xDF\xBF\xE0\xA0\x80\xED\x9F\xBF\xEE\x80\x80\xEF\xBB\xBF\xEF\xBF\xBF"
      "\xF0\x90\x80\x80\xF0\x9F\x98\x80\xF4\x8F\xBF\xBF"sv;
  std::string appended;
  for (const char32_t scalar : kScalars) appendUTF8(appended, scalar);
  EXPECT_EQ(appended, kText);
  EXPECT_TRUE(isValidUTF8(kText));
  EXPECT_EQ(utf16FromUTF8(kText), kUnits);
  EXPECT_EQ(utf8FromUTF16(kUnits), kText);
  const std::pair<TextEncoding, std::string> kEncoded[] = {
      {TextEncoding::utf8, std::string(kText)},
      {TextEncoding::utf16LittleEndian, bytesOf(kUnits, false)},
      {TextEncoding::utf16BigEndian, bytesOf(kUnits, true)},
      {TextEncoding::utf32LittleEndian, bytesOf(kScalars, false)},
      {TextEncoding::utf32BigEndian, bytesOf(kScalars, true)}};
  for (const auto& [encoding, bytes] : kEncoded) {
    std::string out = "old";
    EXPECT_TRUE(convertToUTF8(bytes, encoding, out));
    EXPECT_EQ(out, kText);
    // No prefix that ends within a unit converts.
    EXPECT_FALSE(convertToUTF8(std::string_view(bytes).substr(0, bytes.size() - 1), encoding, out));
  }
}

struct MalformedCase {
  std::string_view bytes;
  std::u16string_view replaced;
};

/// One U+FFFD for each longest prefix that could have begun a character.
constexpr MalformedCase kMalformed[] = {
    {"a\x80z", u"a\uFFFDz"},
    {"\xBF\xBF", u"\uFFFD\uFFFD"},
    {"\xC0\x80", u"\uFFFD\uFFFD"},  // overlong
    {"\xC1\xBF", u"\uFFFD\uFFFD"},
    {"\xE0\x9F\xBF", u"\uFFFD\uFFFD\uFFFD"},
    {"\xF0\x8F\xBF\xBF", u"\uFFFD\uFFFD\uFFFD\uFFFD"},
    {"\xED\xA0\x80", u"\uFFFD\uFFFD\uFFFD"},  // surrogates
    {"\xED\xBF\xBF", u"\uFFFD\uFFFD\uFFFD"},
    {"\xF4\x90\x80\x80", u"\uFFFD\uFFFD\uFFFD\uFFFD"},  // past the end
    {"\xF5\x80", u"\uFFFD\uFFFD"},
    {"\xFE\xFF", u"\uFFFD\uFFFD"},
    {"\xC3", u"\uFFFD"},  // cut
    {"\xE2\x82", u"\uFFFD"},
    {"\xF0\x9F\x98", u"\uFFFD"},
    {"\xC3z", u"\uFFFDz"},
    {"\xE2\x82z", u"\uFFFDz"},
    {"\xF0\x9F\xC3\xA9", u"\uFFFD\u00E9"},
    {"\xF0\x9F\x98\xF0\x9F\x98\x80", u"\uFFFD\U0001F600"}};

TEST(Unicode, MalformedUTF8IsRefusedOrReplaced) {
  for (const MalformedCase& c : kMalformed) {
    SCOPED_TRACE(testing::PrintToString(c.bytes));
    std::string out;
    EXPECT_FALSE(isValidUTF8(c.bytes));
    EXPECT_FALSE(convertToUTF8(c.bytes, TextEncoding::utf8, out));
    EXPECT_EQ(utf16FromUTF8(c.bytes), c.replaced);
  }
}

TEST(Unicode, LoneSurrogatesAreRefusedOrReplaced) {
  constexpr char16_t kHigh = 0xD83D;
  constexpr char16_t kLow = 0xDE00;
  const std::pair<std::u16string, std::string_view> kCases[] = {
      {{kHigh}, "\uFFFD"},
      {{kLow}, "\uFFFD"},
      {{u'a', kHigh, u'b'},
       "a\uFFFD"
       "b"},
      {{kLow, kHigh}, "\uFFFD\uFFFD"},
      {{kHigh, kHigh, kLow}, "\uFFFD\U0001F600"},
      {{kHigh, kLow, kLow}, "\U0001F600\uFFFD"}};
  for (const auto& [units, text] : kCases) {
    EXPECT_EQ(utf8FromUTF16(units), text);
    for (const bool bigEndian : {false, true}) {
      std::string out;
      EXPECT_FALSE(convertToUTF8(
          bytesOf(std::u16string_view(units), bigEndian),
          bigEndian ? TextEncoding::utf16BigEndian : TextEncoding::utf16LittleEndian, out));
    }
  }
  for (const char32_t wrong : std::array<char32_t, 4>{0xD800, 0xDFFF, 0x110000, 0xFFFFFFFF}) {
    const std::u32string text = {U'a', wrong};
    std::string out;
    EXPECT_FALSE(
        convertToUTF8(bytesOf(std::u32string_view(text), true), TextEncoding::utf32BigEndian, out));
  }
}

}  // namespace
}  // namespace tavlen
