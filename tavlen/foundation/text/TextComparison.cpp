#include "tavlen/foundation/text/TextComparison.h"

#include <unicode/uchar.h>
#include <unicode/ucol.h>
#include <unicode/unorm2.h>
#include <unicode/ustring.h>
#include <unicode/utf16.h>

#include <algorithm>
#include <cstdint>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "tavlen/foundation/text/Unicode.h"
#include "tavlen/foundation/text/UserLocale.h"

namespace tavlen {

namespace {

/// ICU counts in 32 bits, and folding lengthens a text. Longer texts are compared unfolded.
constexpr std::size_t kLongestText = std::size_t{1} << 27;

std::int32_t lengthOf(const std::u16string& text) { return static_cast<std::int32_t>(text.size()); }

/// The result of an ICU transformation; `text` unchanged when ICU fails.
template <class Call>
std::u16string transformed(const std::u16string& text, const Call& call) {
  std::u16string out(text.size() + 16, u'\0');
  for (int attempt = 0; attempt < 2; ++attempt) {
    UErrorCode status = U_ZERO_ERROR;
    const std::int32_t length = call(out.data(), lengthOf(out), &status);
    if (status != U_BUFFER_OVERFLOW_ERROR && U_FAILURE(status)) return text;
    const bool fits = status != U_BUFFER_OVERFLOW_ERROR;
    out.resize(static_cast<std::size_t>(length));
    if (fits) return out;
  }
  return text;
}

std::u16string normalized(const std::u16string& text,
                          const UNormalizer2* (*form)(UErrorCode* status)) {
  UErrorCode error = U_ZERO_ERROR;
  const UNormalizer2* normalizer = form(&error);
  if (U_FAILURE(error)) return text;
  return transformed(text, [&](char16_t* out, std::int32_t capacity, UErrorCode* status) {
    return unorm2_normalize(normalizer, text.data(), lengthOf(text), out, capacity, status);
  });
}

/// Removes the dot above from soft-dotted letters: in Lithuanian a small i keeps its dot as a
/// separate mark under an accent, while the capital I has none.
void dropDotsAboveI(std::u16string& text) {
  constexpr char16_t kDotAbove = 0x0307;
  std::size_t used = 0;
  bool afterSoftDotted = false;
  for (const char16_t unit : text) {
    if (unit == kDotAbove && afterSoftDotted) continue;
    // Marks below the letter, such as the ogonek, come between the letter and its dot.
    if (!afterSoftDotted || u_getCombiningClass(unit) == 0 || u_getCombiningClass(unit) == 230) {
      afterSoftDotted = unit == u'i' || unit == u'j';
    }
    text[used++] = unit;
  }
  text.resize(used);
}

/// The form in which texts that differ only in case and composition are equal.
std::u16string folded(std::string_view utf8, const std::string& language) {
  std::u16string text = utf16FromUTF8(utf8);
  if (text.size() > kLongestText) return text;
  const bool isTurkic = language == "tr" || language == "az";
  // Most names are ASCII, of which only the case changes.
  if (!isTurkic && isASCII(utf8)) {
    for (char16_t& unit : text) {
      if (unit >= u'A' && unit <= u'Z') unit = static_cast<char16_t>(unit + 0x20);
    }
    return text;
  }
  // Folding needs decomposed text, except for the dotted capital I of Turkic languages, which must
  // be composed.
  text = normalized(text, isTurkic ? unorm2_getNFCInstance : unorm2_getNFDInstance);
  const std::uint32_t options = isTurkic ? U_FOLD_CASE_EXCLUDE_SPECIAL_I : U_FOLD_CASE_DEFAULT;
  text = transformed(text, [&](char16_t* out, std::int32_t capacity, UErrorCode* status) {
    return u_strFoldCase(out, capacity, text.data(), lengthOf(text), options, status);
  });
  text = normalized(text, unorm2_getNFDInstance);
  if (language == "lt") dropDotsAboveI(text);
  return text;
}

struct CloseCollator {
  void operator()(UCollator* collator) const { ucol_close(collator); }
};
using CollatorPointer = std::unique_ptr<UCollator, CloseCollator>;

CollatorPointer openCollator(const std::string& locale) {
  UErrorCode status = U_ZERO_ERROR;
  CollatorPointer collator(ucol_open(locale.c_str(), &status));
  if (U_FAILURE(status)) return nullptr;
  // Some locales ignore punctuation, and keywords in a locale's name may change other attributes.
  ucol_setAttribute(collator.get(), UCOL_STRENGTH, UCOL_SECONDARY, &status);
  ucol_setAttribute(collator.get(), UCOL_CASE_LEVEL, UCOL_OFF, &status);
  ucol_setAttribute(collator.get(), UCOL_ALTERNATE_HANDLING, UCOL_NON_IGNORABLE, &status);
  ucol_setAttribute(collator.get(), UCOL_NUMERIC_COLLATION, UCOL_OFF, &status);
  return U_SUCCESS(status) ? std::move(collator) : nullptr;
}

/// The locale's data, one per thread: a collator takes a third of a millisecond to open and must
/// not be shared. Without a collator, texts compare by code units.
struct LocaleRules {
  std::string locale = userLocale();
  std::string language = languageOf(locale);
  CollatorPointer collator = openCollator(locale);
};

const LocaleRules& localeRules() {
  thread_local LocaleRules rules;
  if (std::string locale = userLocale(); locale != rules.locale) rules = LocaleRules();
  return rules;
}

/// Whether the code point at `position` belongs to the character before it: a combining mark, or
/// the next letter of a Korean syllable, which decomposes like an accented letter.
bool continuesCharacter(const std::u16string& text, std::size_t position) {
  if (position >= text.size()) return false;
  UChar32 codePoint = 0;
  U16_GET(text.data(), 0, position, text.size(), codePoint);
  if ((U_GET_GC_MASK(codePoint) & U_GC_M_MASK) != 0) return true;
  const int syllableType = u_getIntPropertyValue(codePoint, UCHAR_HANGUL_SYLLABLE_TYPE);
  return syllableType == U_HST_VOWEL_JAMO || syllableType == U_HST_TRAILING_JAMO;
}

/// The length of the prefix of `needle` that matches once `next` follows, when `matched` units
/// matched before it.
std::size_t extended(const std::u16string& needle, const std::vector<std::size_t>& borders,
                     std::size_t matched, char16_t next) {
  while (matched > 0 && needle[matched] != next) matched = borders[matched - 1];
  return needle[matched] == next ? matched + 1 : 0;
}

/// For each prefix of `needle`, the length of its longest proper prefix that is also a suffix: the
/// table of the Knuth-Morris-Pratt search, which stays linear for repetitive texts.
std::vector<std::size_t> bordersOf(const std::u16string& needle) {
  std::vector<std::size_t> borders(needle.size(), 0);
  for (std::size_t i = 1; i < needle.size(); ++i) {
    borders[i] = extended(needle, borders, borders[i - 1], needle[i]);
  }
  return borders;
}

}  // namespace

std::weak_ordering localizedCaseInsensitiveCompare(std::string_view left, std::string_view right) {
  const LocaleRules& rules = localeRules();
  // Collate the folded texts, not the originals, to keep the order consistent with equality.
  const std::u16string foldedLeft = folded(left, rules.language);
  const std::u16string foldedRight = folded(right, rules.language);
  if (!rules.collator || std::max(foldedLeft.size(), foldedRight.size()) > INT32_MAX) {
    return foldedLeft <=> foldedRight;
  }
  const UCollationResult result =
      ucol_strcoll(rules.collator.get(), foldedLeft.data(), lengthOf(foldedLeft),
                   foldedRight.data(), lengthOf(foldedRight));
  return static_cast<int>(result) <=> 0;
}

std::string localizedCaseInsensitiveKey(std::string_view text) {
  const LocaleRules& rules = localeRules();
  const std::u16string units = folded(text, rules.language);
  std::string key;
  if (!rules.collator) {
    for (const char16_t unit : units) {
      key += static_cast<char>(unit >> 8);
      key += static_cast<char>(unit & 0xFF);
    }
    return key;
  }
  const auto sortKey = [&] {
    return ucol_getSortKey(rules.collator.get(), units.data(), lengthOf(units),
                           reinterpret_cast<std::uint8_t*>(key.data()),
                           static_cast<std::int32_t>(key.size()));
  };
  constexpr std::size_t kUsualBytes = 64;
  key.resize(kUsualBytes);
  const auto needed = static_cast<std::size_t>(sortKey());
  const bool fits = needed <= key.size();
  key.resize(needed);
  if (!fits) sortKey();
  return key;
}

bool localizedCaseInsensitiveContains(std::string_view text, std::string_view query) {
  const std::string& language = localeRules().language;
  const std::u16string needle = folded(query, language);
  if (needle.empty()) return false;
  const std::u16string haystack = folded(text, language);
  const std::vector<std::size_t> borders = bordersOf(needle);
  std::size_t matched = 0;
  for (std::size_t i = 0; i < haystack.size(); ++i) {
    matched = extended(needle, borders, matched, haystack[i]);
    if (matched < needle.size()) continue;
    if (!continuesCharacter(haystack, i + 1)) return true;
    matched = borders[matched - 1];
  }
  return false;
}

}  // namespace tavlen
