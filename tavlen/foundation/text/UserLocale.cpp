#include "tavlen/foundation/text/UserLocale.h"

#include <unicode/uloc.h>

#include <algorithm>
#include <array>
#include <cstdint>

#ifdef __APPLE__
#include <CoreFoundation/CoreFoundation.h>

#include <memory>
#include <utility>
#endif

namespace tavlen {

namespace {

using LocaleBuffer = std::array<char, ULOC_FULLNAME_CAPACITY>;

/// The text that `call` writes into a buffer; empty when it fails or the text does not fit.
template <class Call>
std::string localePart(const Call& call) {
  LocaleBuffer buffer;
  UErrorCode status = U_ZERO_ERROR;
  const std::int32_t length =
      call(buffer.data(), static_cast<std::int32_t>(buffer.size()), &status);
  if (U_FAILURE(status) || status == U_STRING_NOT_TERMINATED_WARNING) return {};
  return {buffer.data(), static_cast<std::size_t>(length)};
}

constexpr const char* kFallback = "en_US";

}  // namespace

#ifdef __APPLE__

namespace {

/// ICU's own default is en_US_POSIX in an app, whatever the user chose.
std::vector<std::string> localesOfPreferredLanguages() {
  std::vector<std::string> locales;
  const std::unique_ptr<const void, decltype(&CFRelease)> languages(
      CFLocaleCopyPreferredLanguages(), &CFRelease);
  const auto list = static_cast<CFArrayRef>(languages.get());
  const CFIndex count = list != nullptr ? CFArrayGetCount(list) : 0;
  for (CFIndex i = 0; i < count; ++i) {
    LocaleBuffer tag{};
    const auto language = static_cast<CFStringRef>(CFArrayGetValueAtIndex(list, i));
    if (CFStringGetCString(language, tag.data(), tag.size(), kCFStringEncodingUTF8) == 0) continue;
    std::string locale = localeOfLanguage(tag.data());
    if (!locale.empty()) locales.push_back(std::move(locale));
  }
  if (locales.empty()) locales.emplace_back(kFallback);
  return locales;
}

}  // namespace

std::vector<std::string> userLocales() {
  // A change of the languages takes effect when a program starts again.
  static const std::vector<std::string> locales = localesOfPreferredLanguages();
  return locales;
}

std::string userLocale() { return userLocales().front(); }

#else

std::vector<std::string> userLocales() { return {userLocale()}; }

std::string userLocale() {
  std::string locale = uloc_getDefault();
  return locale == "en_US_POSIX" ? kFallback : locale;
}

#endif

std::string localeOfLanguage(const std::string& tag) {
  return localePart([&](char* out, std::int32_t capacity, UErrorCode* status) {
    return uloc_forLanguageTag(tag.c_str(), out, capacity, nullptr, status);
  });
}

std::string languageOf(const std::string& locale) {
  return localePart([&](char* out, std::int32_t capacity, UErrorCode* status) {
    return uloc_getLanguage(locale.c_str(), out, capacity, status);
  });
}

std::vector<std::string> localeFallbacks(const std::string& locale) {
  std::vector<std::string> names;
  const std::string base = localePart([&](char* out, std::int32_t capacity, UErrorCode* status) {
    return uloc_getBaseName(locale.c_str(), out, capacity, status);
  });
  if (base.empty()) return names;
  names.push_back(base);
  // Put the likely script between the region and the bare language, so that Taiwan gets the
  // traditional table and not that of the mainland.
  std::string name = localePart([&](char* out, std::int32_t capacity, UErrorCode* status) {
    return uloc_addLikelySubtags(base.c_str(), out, capacity, status);
  });
  while (!name.empty()) {
    if (std::find(names.begin(), names.end(), name) == names.end()) names.push_back(name);
    name = localePart([&](char* out, std::int32_t capacity, UErrorCode* status) {
      return uloc_getParent(name.c_str(), out, capacity, status);
    });
  }
  return names;
}

}  // namespace tavlen
