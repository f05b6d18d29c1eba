#pragma once

#include <string>
#include <string_view>

namespace tavlen {

/// What the library asks of single bytes of a text. Unlike the C library's functions, these know
/// ASCII alone, whatever the locale, and take any byte.

constexpr bool isDigit(char c) { return c >= '0' && c <= '9'; }
constexpr bool isLetter(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); }
constexpr char lowercased(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c | 0x20) : c; }

/// `text` with its ASCII letters in lower case; other bytes stay.
inline std::string lowercased(std::string_view text) {
  std::string result(text);
  for (char& c : result) c = lowercased(c);
  return result;
}

/// Whether `byte` continues a character of UTF-8 that an earlier byte began.
constexpr bool isUTF8Continuation(char byte) { return (byte & 0xC0) == 0x80; }

}  // namespace tavlen
