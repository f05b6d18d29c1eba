#include "tavlen/foundation/javascript/detail/JavaScriptString.h"

#include <cstdint>
#include <limits>
#include <stdexcept>

#include "tavlen/foundation/javascript/detail/JavaScriptEngine.h"
#include "tavlen/foundation/text/Unicode.h"

namespace tavlen {

// The engine's code unit is char16_t under another name, so the casts below are safe.
static_assert(sizeof(JSChar) == sizeof(char16_t));

JavaScriptString::JavaScriptString(std::string_view text) {
  const std::u16string units = utf16FromUTF8(text);
  if (units.size() > std::numeric_limits<std::int32_t>::max()) {
    throw std::length_error("text too long for a JavaScript string");
  }
  string_ = engine().JSStringCreateWithCharacters(reinterpret_cast<const JSChar*>(units.data()),
                                                  units.size());
}

JavaScriptString::~JavaScriptString() { engine().JSStringRelease(string_); }

std::string JavaScriptString::utf8() const {
  const auto* units = reinterpret_cast<const char16_t*>(engine().JSStringGetCharactersPtr(string_));
  return utf8FromUTF16({units, engine().JSStringGetLength(string_)});
}

}  // namespace tavlen
