#include "tavlen/foundation/text/TextComparison.h"

#include <gtest/gtest.h>
#include <unicode/uloc.h>

#include <compare>
#include <string>
#include <string_view>
#include <utility>

#include "tests/support/Threads.h"

namespace tavlen {
namespace {

/// Makes a locale ICU's default for its lifetime.
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

struct ContainsCase {
  std::string_view text;
  std::string_view query;
  bool contained;
  std::string_view locale = "";  // every one of kPlainLocales
};

/// en_US_POSIX is what ICU makes of LC_ALL=C, whose own collator knows no case.
constexpr const char* kPlainLocales[] = {"en_US_POSIX", "en", "de_AT", ""};

constexpr ContainsCase kContainsCases[] = {
    {"Hello", "ell", true},
    {"Hello", "ELL", true},
    {"", "a", false},
    {"", "", false},
    {"anything", "", false},
    {"CAFÉ", "café", true},
    {"CAFÉ", "cafe\u0301", true},
    {"CAFE\u0301", "café", true},
    {"Café", "cafe", false},
    {"cafe\u0301", "e", false},
    {"cafe\u0301 e", "e", true},            // a later match counts
    {"e\u0301e\u0301e", "e\u0301e", true},  // one that overlaps a refused match, too
    {"e\u0301e\u0301e\u0301", "e\u0301e", false},
    {"aabaabaaab", "AABAAA", true},
    {"aabaabaab", "aabaaa", false},
    {"ệ", "e\u0323", false},  // a dot below, then a circumflex
    {"Éclair", "ec", false},
    {"Straße", "STRASSE", true},
    {"Straße", "ss", true},
    {"ﬁle", "FI", true},
    {"Ａ", "a", false},
    {"I", "ı", false},
    {"İ", "i", false},
    {"a b", "ab", false},
    {"Привет", "ПРИВ", true},
    {"ΣΊΣΥΦΟΣ", "σίσυφος", true},
    {"\u1F80", "\u1F88", true},  // an iota subscript
    {"각", "가", false},
    {"각", "\u1100\u1161\u11A8", true},
    {"\U00010400", "\U00010428", true},  // beyond the basic plane
    {"a\u00ADb", "\u00AD", true},
    {"ab", "\u00AD", false},
    {"I", "ı", true, "tr"},
    {"İstanbul", "istan", true, "tr"},
    {"I\u0307stanbul", "istan", true, "az_Latn"},
    {"ISPARTA", "isp", false, "tr"},
    {"DI\u0300D", "di\u0307\u0300d", true, "lt"},
    {"Į\u0301", "i\u0328\u0307\u0301", true, "lt"},
    {"DÌD", "di\u0307\u0300d", false, "en"},
};

TEST(TextComparison, Contains) {
  for (const ContainsCase& c : kContainsCases) {
    for (const char* plain : kPlainLocales) {
      const LocaleGuard guard(c.locale.empty() ? plain : c.locale.data());
      EXPECT_EQ(localizedCaseInsensitiveContains(c.text, c.query), c.contained)
          << c.text << " contains " << c.query << " in " << uloc_getDefault();
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
