#include "tavlen/foundation/text/TextComparison.h"

#include <gtest/gtest.h>
#include <unicode/uloc.h>

#include <compare>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "tavlen/foundation/json/JSONDecoder.h"
#include "tests/support/TableFile.h"
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
