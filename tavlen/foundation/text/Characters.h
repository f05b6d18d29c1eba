#pragma once

#include <string>
#include <string_view>

namespace tavlen {

// Unlike the C library's functions, these know only ASCII, whatever the locale, and accept any
// byte.

/// Whether `c` is one of '0' to '9'.
constexpr bool isDigit(char c) { return c >= '0' && c <= '9'; }
/// Whether `c` is an ASCII letter of either case.
constexpr bool isLetter(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); }
/// The lower-case form of an ASCII capital letter; other bytes are returned unchanged.
constexpr char lowercased(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c | 0x20) : c; }

/// `text` with lowercased() applied to each byte.
inline std::string lowercased(std::string_view text) {
  std::string result(text);
  for (char& c : result) c = lowercased(c);
  return result;
}

/// Whether `byte` is a UTF-8 continuation byte.
constexpr bool isUTF8Continuation(char byte) { return (byte & 0xC0) == 0x80; }

}  // namespace tavlen
