#pragma once

#include <string>
#include <vector>

#include "tavlen/foundation/base/API.h"

namespace tavlen {

/// The user's locale as ICU writes it: "de_AT", "zh_Hant_TW". On Apple's systems, that of the
/// user's first language. Threads: any.
///
/// A process without a locale ("C", "POSIX" or unset) gets "en_US": ICU's en_US_POSIX collates by
/// byte and ignores case rules.
TAVLEN_API std::string userLocale();

/// The locales of all languages that the user reads, the preferred one first; never empty. Only
/// Apple's systems have more than userLocale(). Threads: any.
TAVLEN_API std::vector<std::string> userLocales();

/// The locale of a BCP 47 language tag: "zh_Hant_TW" for "zh-Hant-TW". Empty for a malformed tag.
TAVLEN_API std::string localeOfLanguage(const std::string& tag);

/// The language code of a locale: "de". Empty for the root locale.
TAVLEN_API std::string languageOf(const std::string& locale);

/// The names under which translations for `locale` may be stored, the closest first, with
/// underscores: for "zh_TW" these are zh_TW, zh_Hant_TW, zh_Hant, zh.
TAVLEN_API std::vector<std::string> localeFallbacks(const std::string& locale);

}  // namespace tavlen
