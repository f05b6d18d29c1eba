#include "tavlen/foundation/text/EscapedText.h"

#include <algorithm>

#include "tavlen/foundation/text/Unicode.h"

namespace tavlen {

namespace {

void appendHex(std::u16string& out, char16_t unit, int digits) {
  constexpr std::u16string_view kHex = u"0123456789abcdef";
  while (digits-- > 0) out += kHex[static_cast<std::size_t>(unit >> (4 * digits)) & 0xF];
}

/// Whether the byte begins a character from U+007F on that may have to be escaped.
bool mayBeginEscaped(char byte) {
  return byte == '\x7F' || byte == '\xC2' || byte == '\xD8' || byte == '\xE2';
}

bool isPlainASCII(char byte) { return byte >= 0x20 && byte < 0x7F; }

/// Writes slashes as they are, which JSON allows.
void removeSlashEscapes(std::string& json) {
  std::size_t from = json.find('\\');
  std::size_t to = from;
  while (from < json.size()) {
    // An escape begins with a backslash; so the second of two does not.
    if (json[from] == '\\') {
      if (json[from + 1] != '/') json[to++] = json[from];
      ++from;
    }
    json[to++] = json[from++];
  }
  if (from != std::string::npos) json.resize(to);
}

}  // namespace

bool needsEscape(char16_t unit) {
  return unit < 0x20 || (unit >= 0x7F && unit < 0xA0) || unit == 0x061C || unit == 0x200E ||
         unit == 0x200F || (unit >= 0x2028 && unit <= 0x202E) || (unit >= 0x2066 && unit <= 0x2069);
}

void appendUnicodeEscape(std::u16string& out, char16_t unit) { appendHex(out += u"\\u", unit, 4); }

std::string escapedForTerminal(std::string_view text) {
  if (std::all_of(text.begin(), text.end(), isPlainASCII)) return std::string(text);
  std::u16string out;
  for (const char16_t unit : utf16FromUTF8(text)) {
    if (unit == u'\n') {
      out += u"\\n";
    } else if (unit == u'\t') {
      out += u"\\t";
    } else if (unit < 0x80 && needsEscape(unit)) {
      appendHex(out += u"\\x", unit, 2);
    } else if (needsEscape(unit)) {
      appendUnicodeEscape(out, unit);
    } else {
      out += unit;
    }
  }
  return utf8FromUTF16(out);
}

std::string escapedJSON(std::string json) {
  removeSlashEscapes(json);
  if (isASCII(json) && json.find('\x7F') == std::string::npos) return json;
  if (std::none_of(json.begin(), json.end(), mayBeginEscaped)) return json;
  std::u16string out;
  for (const char16_t unit : utf16FromUTF8(json)) {
    if (unit >= 0x7F && needsEscape(unit)) {
      appendUnicodeEscape(out, unit);
    } else {
      out += unit;
    }
  }
  return utf8FromUTF16(out);
}

}  // namespace tavlen
