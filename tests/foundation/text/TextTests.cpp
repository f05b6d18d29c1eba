#include <unicode/uloc.h>

#include <array>
#include <bit>
#include <charconv>
#include <cmath>
#include <cstdlib>
#include <limits>
#include <optional>
#include <random>

#include "tavlen/foundation/json/JSONDecoder.h"
#include "tavlen/foundation/text/Base64.h"
#include "tavlen/foundation/text/Log.h"
#include "tavlen/foundation/text/NearestDouble.h"
#include "tavlen/foundation/text/NumberText.h"
#include "tavlen/foundation/text/StyledText.h"
#include "tavlen/foundation/text/TextComparison.h"
#include "tavlen/foundation/text/Unicode.h"
#include "tavlen/foundation/text/UserLocale.h"
#include "tests/support/TableFile.h"
#include "tests/support/Threads.h"
#include "tests/support/WideText.h"

namespace tavlen {
namespace {

using namespace std::string_view_literals;
using namespace std::string_literals;

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

TEST(Unicode, MalformedUTF8IsRefusedOrReplaced) {
  for (const auto& row : tableFrom("malformed.txt", 2)) {
    SCOPED_TRACE(row[0]);
    std::string out;
    EXPECT_FALSE(isValidUTF8(fromHex(row[0])));
    EXPECT_FALSE(convertToUTF8(fromHex(row[0]), TextEncoding::utf8, out));
    EXPECT_EQ(utf8FromUTF16(utf16FromUTF8(fromHex(row[0]))), row[1]);
  }
}

TEST(Unicode, LoneSurrogatesAreRefusedOrReplaced) {
  constexpr char16_t kHigh = 0xD83D;
  constexpr char16_t kLow = 0xDE00;
  const std::pair<std::u16string, std::string_view> kCases[] = {
      {{kHigh}, "\uFFFD"},
      {{kLow}, "\uFFFD"},
      {{u'a', kHigh, u'z'}, "a\uFFFDz"},
      {{kLow, kHigh}, "\uFFFD\uFFFD"},
      {{kHigh, kHigh, kLow}, "\uFFFD\U0001F600"},
      {{kHigh, kLow, kLow}, "\U0001F600\uFFFD"}};
  std::string out;
  for (const auto& [units, text] : kCases) {
    const std::u16string_view view = units;
    EXPECT_EQ(utf8FromUTF16(view), text);
    EXPECT_FALSE(convertToUTF8(bytesOf(view, false), TextEncoding::utf16LittleEndian, out));
    EXPECT_FALSE(convertToUTF8(bytesOf(view, true), TextEncoding::utf16BigEndian, out));
  }
  for (const char32_t wrong : std::array<char32_t, 4>{0xD800, 0xDFFF, 0x110000, 0xFFFFFFFF}) {
    const std::u32string text = {U'a', wrong};
    EXPECT_FALSE(convertToUTF8(bytesOf<char32_t>(text, true), TextEncoding::utf32BigEndian, out));
  }
}

template <class Append>
std::string textOf(double value, const Append& append) {
  std::string out = "=";  // what stood there before stays
  append(out, value);
  return out.substr(1);
}

double valueOf(const std::string& text) {
  char* end = nullptr;
  const double value = std::strtod(text.c_str(), &end);
  EXPECT_EQ(*end, 0) << text;
  return value;
}

TEST(NumberText, DescriptionsAndNumbersHaveTheirLayout) {
  for (const auto& row : tableFrom("descriptions.txt", 1)) {
    for (const std::string& text : row) {
      const double value = valueOf(text);
      EXPECT_EQ(textOf(value, appendDescription), text);
      std::string_view number = text;
      if (number.ends_with(".0")) number.remove_suffix(2);
      EXPECT_EQ(textOf(value, appendNumber), number);
    }
  }
}

TEST(NumberText, WhatIsNoNumberHasADescription) {
  const double infinity = std::numeric_limits<double>::infinity();
  EXPECT_EQ(textOf(infinity, appendDescription), "inf");
  EXPECT_EQ(textOf(-infinity, appendDescription), "-inf");
  const std::pair<std::uint64_t, std::string_view> kNaNs[] = {{0x7FF8000000000000, "nan"},
                                                              {0xFFF8000000000000, "-nan"},
                                                              {0x7FF800000000001F, "nan(0x1f)"},
                                                              {0x7FF0000000000001, "snan"}};
  for (const auto& [bits, text] : kNaNs) {
    EXPECT_EQ(textOf(std::bit_cast<double>(bits), appendDescription), text);
  }
}

/// The significant digits of a number's text.
std::string significantDigits(std::string_view text) {
  std::string digits;
  for (const char c : text.substr(0, text.find('e'))) {
    if (c >= '0' && c <= '9' && (c != '0' || !digits.empty())) digits += c;
  }
  while (digits.ends_with('0')) digits.pop_back();
  return digits;
}

TEST(NumberText, EveryNumberReadsBackFromItsShortestText) {
  std::mt19937_64 random(20'231);
  for (int round = 0; round < 200'000; ++round) {
    const std::uint64_t bits = random();
    // Half of them from the range in which the layout changes, which bit patterns rarely hit.
    const double value = round % 2 == 0 ? std::bit_cast<double>(bits)
                                        : std::ldexp(static_cast<double>(bits >> (bits % 60)), -40);
    if (!std::isfinite(value)) continue;
    const std::string text = textOf(value, appendNumber);
    ASSERT_EQ(std::bit_cast<std::uint64_t>(valueOf(text)), std::bit_cast<std::uint64_t>(value))
        << text;
    std::array<char, 32> peer;
    const char* const end =
        std::to_chars(peer.begin(), peer.end(), value, std::chars_format::scientific).ptr;
    ASSERT_EQ(significantDigits(text), significantDigits({peer.data(), end}));
  }
}

TEST(NumberText, FractionsHaveNoExponent) {
  for (const auto& [value, text] : {std::pair{0.25, ".25"s},
                                    {0x1p-23, ".00000011920928955078125"s},
                                    {0x1.fffffffffffffp-1, ".9999999999999999"s},
                                    {5e-324, "." + std::string(323, '0') + "5"}}) {
    EXPECT_EQ(textOf(value, appendFraction), text);
  }
}

#ifdef __cpp_lib_to_chars  // not with every C++ library

/// What the C++ library makes of a number's text.
std::optional<NearestDouble> peerOfNearestDouble(const std::string& text, RealForm form) {
  double value = 0;
  const auto format =
      form == RealForm::plain ? std::chars_format::fixed : std::chars_format::general;
  const char* const end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, value, format);
  if (stop != end || error == std::errc::invalid_argument) return std::nullopt;
  if (error == std::errc()) return NearestDouble{value, true};
  return NearestDouble{std::strtod(text.c_str(), nullptr), false};
}

void expectNearestDouble(const std::string& text) {
  for (const RealForm form : {RealForm::general, RealForm::plain}) {
    const auto number = nearestDouble(text, form);
    const auto peer = peerOfNearestDouble(text, form);
    ASSERT_EQ(number.has_value(), peer.has_value()) << text;
    if (!number) continue;
    EXPECT_EQ(std::bit_cast<std::uint64_t>(number->value),
              std::bit_cast<std::uint64_t>(peer->value))
        << text;
    EXPECT_EQ(number->isInRange, peer->isInRange) << text;
  }
}

TEST(NearestDouble, IsThatOfTheStandardLibrary) {
  const std::string zeros(400, '0');
  for (const std::string& text :
       {""s, "-"s, "."s, "-."s, " 1"s, "\v1"s, "1 "s, "1\0"s, "+1"s, "--1"s, "5."s, "-.5"s, "1e+"s,
        "1,5"s, "0x10"s, "0X1p3"s, "INF"s, "-Infinity"s, "infinit"s, "nan"s, "-NaN(a_1)"s, "nan("s,
        "nan( )"s, "-0"s, "0.0e999"s, "-0e-999"s, "1e400"s, "-1e400"s, "-1e-400"s,
        "1e99999999999999999999"s, "1e-99999999999999999999"s, "1" + zeros, "1" + zeros + "e-400",
        "0." + zeros + "1e401", "0." + zeros,
        // Both sides of half of the smallest double, of the largest, and of two neighbours.
        "2.4703282292062327e-324"s, "2.4703282292062328e-324"s, "1.7976931348623158e308"s,
        "1.7976931348623159e308"s, "9007199254740993"s, "9007199254740993." + zeros + "1"}) {
    expectNearestDouble(text);
  }
  std::mt19937_64 random(1'031);
  for (int round = 0; round < 50'000; ++round) {
    constexpr std::string_view kCharacters = "0123456789012345678900000999....eE--+ infat(x";
    std::string text(random() % 30, '0');
    // Half of them are mostly numbers, which other characters rarely make.
    for (char& c : text) c = kCharacters[random() % (round % 2 == 0 ? 29 : kCharacters.size())];
    if (round % 2 == 0) text += "e" + std::to_string(static_cast<int>(random() % 800) - 400);
    expectNearestDouble(text);
  }
}

#endif

TEST(Base64, isStrict) {
  const std::pair<std::string, const char*> rows[] = {{"", ""},
                                                      {"\0"s, "AA=="},
                                                      {"\xFF", "/w=="},
                                                      {"\xFF\xFF", "//8="},
                                                      {"\xFB\xEF\xBE", "++++"},
                                                      {"abcd", "YWJjZA=="}};
  for (const auto& [bytes, text] : rows) {
    EXPECT_EQ(base64FromBytes(bytes), text);
    EXPECT_EQ(bytesFromBase64(text), bytes);
  }
  for (const char* text : {"A", "AA", "AA=", "AA===", "AAA", "AAA==", "AAAA=", "====", "AA==AA==",
                           "AA=A", "A-_A", "AA ==", "\xC3\xA9=="}) {
    EXPECT_EQ(bytesFromBase64(text), std::nullopt) << text;
  }
  EXPECT_EQ(bytesFromBase64(" A\nA\t=\r= ", Base64Blanks::skipped), "\0"s);
}

TEST(StyledText, JoinsWhatLooksAlike) {
  const StyledText::Color red{1, 0, 0, 1};
  const StyledText::Color blue{0, 0, 1, 1};
  const StyledText::Font small{"Menlo", 9};
  using Runs = std::vector<StyledText::Run>;
  StyledText text;
  text.setFont(small);
  EXPECT_EQ(text.runs(), Runs());
  text.append("a", red);
  text.append("", blue);
  text.append("b", red);
  text.append("c", blue);
  EXPECT_EQ(text.runs(), (Runs{{"ab", red, {}}, {"c", blue, {}}}));
  text.setFont({"Menlo", 12});
  text.append("d", blue);
  EXPECT_EQ(text.runs().size(), 3U);
  text.setFont(small);
  EXPECT_EQ(text.runs(), (Runs{{"ab", red, small}, {"cd", blue, small}}));
  EXPECT_EQ(text.plain(), "abcd");
}

TEST(Log, GoesToOneSinkAtATime) {
  std::vector<std::string> messages;
  setLogSink([&](std::string_view message) {
    messages.emplace_back(message);
    if (message == "outer") logMessage("inner");  // no lock is held
  });
  logMessage("outer");
  EXPECT_EQ(messages, (std::vector<std::string>{"outer", "inner"}));
  setLogSink({});
  testing::internal::CaptureStderr();
  logMessage("a\nb\x1B[0m\x7F caf\xC3\xA9\xC2\x9B");
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "a\\nb\\x1b[0m\\x7f caf\xC3\xA9\\u009b\n");
  EXPECT_EQ(messages.size(), 2U);
}

class LocaleGuard {
 public:
  explicit LocaleGuard(const char* locale) : old_(uloc_getDefault()) { set(locale); }
  ~LocaleGuard() { set(old_.c_str()); }
  LocaleGuard(const LocaleGuard&) = delete;
  LocaleGuard& operator=(const LocaleGuard&) = delete;

 private:
  static void set(const char* locale) {
    UErrorCode status = U_ZERO_ERROR;
    uloc_setDefault(locale, &status);
  }
  std::string old_;
};

TEST(UserLocale, IsMadeOfALanguageTag) {
  const std::pair<const char*, const char*> rows[] = {
      {"de-AT", "de_AT"}, {"zh-Hant-TW", "zh_Hant_TW"}, {"en", "en"}, {"", ""}, {"!", ""}};
  for (const auto& [tag, locale] : rows) EXPECT_EQ(localeOfLanguage(tag), locale) << tag;
}

/// en_US_POSIX is what ICU makes of LC_ALL=C, whose own collator knows no case.
constexpr const char* kPlainLocales[] = {"en_US_POSIX", "en", "de_AT", ""};

TEST(TextComparison, Contains) {
  for (const auto& line : tableFrom("contains.txt", 1)) {
    const auto row = decodeJSON<std::vector<std::string>>(line[0]);
    for (const char* plain : kPlainLocales) {
      const LocaleGuard guard(row.size() > 3 ? row[3].c_str() : plain);
      EXPECT_EQ(localizedCaseInsensitiveContains(row[0], row[1]), row[2] == "yes")
          << line[0] << " in " << uloc_getDefault();
    }
  }
}

/// A search that starts anew at each position would take many thousand million steps.
TEST(TextComparison, RepetitiveTextsAreSearched) {
  const std::string text(400'000, 'a');
  const std::string query(200'000, 'A');
  EXPECT_FALSE(localizedCaseInsensitiveContains(text, query + "b"));
  EXPECT_TRUE(localizedCaseInsensitiveContains(text + "b", query + "b"));
  EXPECT_FALSE(localizedCaseInsensitiveContains(query + "\u0301", query));
}

constexpr auto kSame = std::weak_ordering::equivalent;
constexpr auto kAscending = std::weak_ordering::less;
constexpr auto kDescending = std::weak_ordering::greater;

using Texts = std::pair<std::string_view, std::string_view>;

constexpr Texts kEqual[] = {
    {"a", "A"}, {"Apple", "apple"}, {"", ""}, {"café", "cafe\u0301"}, {"STRASSE", "straße"}};
constexpr Texts kOrdered[] = {{"a", "B"},    {"e", "é"},    {"resume", "Résumé"}, {"é", "f"},
                              {"", "a"},     {"10", "9"},   {"1", "a"},           {"_a", "a"},
                              {"a b", "ab"}, {"a-b", "ab"}, {"A", "Å"},           {"ä", "Z"}};

TEST(TextComparison, Compare) {
  for (const char* locale : kPlainLocales) {
    const LocaleGuard guard(locale);
    for (const auto& [left, right] : kEqual) {
      EXPECT_EQ(localizedCaseInsensitiveCompare(left, right), kSame) << left << " in " << locale;
      EXPECT_EQ(localizedCaseInsensitiveCompare(right, left), kSame) << left << " in " << locale;
    }
    for (const auto& [left, right] : kOrdered) {
      SCOPED_TRACE(std::string(left) + " in " + locale);
      EXPECT_EQ(localizedCaseInsensitiveCompare(left, right), kAscending);
      EXPECT_EQ(localizedCaseInsensitiveCompare(right, left), kDescending);
    }
  }
}

TEST(TextComparison, TheLocaleDecidesTheOrder) {
  const char* const kSettings = "en@colNumeric=yes;colStrength=tertiary;colAlternate=shifted";
  const struct {
    const char *locale, *left, *right;
    std::weak_ordering order;
  } rows[] = {{"sv", "Z", "ä", kAscending},
              {"tr", "I", "ı", kSame},
              {"tr", "İ", "i", kSame},
              {"tr", "I", "i", kAscending},
              {kSettings, "10", "9", kAscending},
              {kSettings, "a", "A", kSame},
              {kSettings, "a-b", "ab", kAscending}};
  for (const auto& row : rows) {
    const LocaleGuard guard(row.locale);
    EXPECT_EQ(localizedCaseInsensitiveCompare(row.left, row.right), row.order) << row.left;
    const std::weak_ordering order =
        localizedCaseInsensitiveKey(row.left) <=> localizedCaseInsensitiveKey(row.right);
    EXPECT_EQ(order, row.order) << row.left;
  }
}

TEST(TextComparison, AnyBytesMayBeCompared) {
  const std::string_view kTexts[] = {
      "\xFF",     "\xC3",   "a\xE2\x82", "\xED\xA0\x80", "\xF4\x90\x80\x80",
      {"\0a", 2}, "\u0301", "a\xCC"};
  for (const std::string_view left : kTexts) {
    EXPECT_TRUE(localizedCaseInsensitiveContains(left, left));
    for (const std::string_view right : kTexts) {
      EXPECT_EQ(localizedCaseInsensitiveCompare(left, right),
                0 <=> localizedCaseInsensitiveCompare(right, left));
      EXPECT_EQ(localizedCaseInsensitiveCompare(left, right),
                localizedCaseInsensitiveKey(left) <=> localizedCaseInsensitiveKey(right));
    }
  }
  EXPECT_EQ(localizedCaseInsensitiveCompare("\xFF", "\xC3"), kSame);
  // Both decompose to three code units, beyond the first guess at the room they need.
  std::string growing;
  for (int i = 0; i < 10'000; ++i) growing += "\u0390\uFB2C";
  EXPECT_TRUE(localizedCaseInsensitiveContains(growing, "\u0390"));
}

TEST(TextComparison, ThreadsCompareSideBySide) {
  inThreads(4, [](int) {
    for (int round = 0; round < 200; ++round) {
      EXPECT_EQ(localizedCaseInsensitiveCompare("b", "A"), kDescending);
      EXPECT_TRUE(localizedCaseInsensitiveContains("Tweak", "tWEAK"));
    }
  });
}

}  // namespace
}  // namespace tavlen
