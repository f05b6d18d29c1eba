#include "tavlen/foundation/toml/detail/TOMLText.h"

#include <algorithm>

#include "tavlen/foundation/coding/CodingError.h"
#include "tavlen/foundation/text/Characters.h"
#include "tavlen/foundation/text/EscapedText.h"
#include "tavlen/foundation/text/Unicode.h"

namespace tavlen {

namespace {

constexpr char16_t kByteOrderMark = 0xFEFF;

std::u16string unitsOf(std::string_view text) {
  if (!isValidUTF8(text)) throw EncodingError::invalidValue("a text that is not UTF-8");
  return utf16FromUTF8(text);
}

/// Editors drop byte order marks, even within a text.
bool isEscaped(char16_t unit) { return needsEscape(unit) || unit == kByteOrderMark; }

void appendEscaped(std::u16string& out, char16_t unit) {
  if (unit == u'\n') {
    out += u"\\n";
  } else if (unit == u'\t') {
    out += u"\\t";
  } else if (unit == u'\r') {
    out += u"\\r";
  } else if (isEscaped(unit) || unit == u' ') {
    appendUnicodeEscape(out, unit);
  } else {
    out += u'\\';  // a quotation mark or a backslash
    out += unit;
  }
}

}  // namespace

void appendTOMLString(std::string& out, std::string_view text) {
  const std::u16string units = unitsOf(text);
  const bool isLiteral = text.find_first_of("\"\\") != std::string_view::npos &&
                         text.find('\'') == std::string_view::npos &&
                         std::none_of(units.begin(), units.end(), isEscaped);
  if (isLiteral) {
    out.append("'").append(text).append("'");
    return;
  }
  std::u16string quoted = u"\"";
  for (const char16_t unit : units) {
    if (isEscaped(unit) || unit == u'"' || unit == u'\\') {
      appendEscaped(quoted, unit);
    } else {
      quoted += unit;
    }
  }
  out += utf8FromUTF16(quoted += u'"');
}

void appendTOMLLines(std::string& out, std::string_view text) {
  const std::u16string units = unitsOf(text);
  std::u16string quoted = u"\"\"\"\n";  // the first line end does not count
  for (std::size_t i = 0; i < units.size(); ++i) {
    const char16_t unit = units[i];
    const char16_t next = i + 1 < units.size() ? units[i + 1] : u'"';
    // Editors drop blanks at the ends of lines.
    const bool isPlain = unit == u'\n' || (unit == u'\t' && next != u'\n');
    const bool needsCare = isEscaped(unit) || unit == u'\\' || (unit == u' ' && next == u'\n') ||
                           (unit == u'"' && next == u'"');
    if (needsCare && !isPlain) {
      appendEscaped(quoted, unit);
    } else {
      quoted += unit;
    }
  }
  out += utf8FromUTF16(quoted += u"\"\"\"");
}

void appendTOMLKey(std::string& out, std::string_view key) {
  const auto isBare = [](char c) { return isLetter(c) || isDigit(c) || c == '_' || c == '-'; };
  if (!key.empty() && std::all_of(key.begin(), key.end(), isBare)) {
    out += key;
  } else {
    appendTOMLString(out, key);
  }
}

}  // namespace tavlen
