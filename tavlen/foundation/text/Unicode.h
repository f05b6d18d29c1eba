#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace tavlen {

bool isASCII(std::string_view text);

/// Whether `text` is well-formed UTF-8: no overlong form, no surrogate, nothing above U+10FFFF.
bool isValidUTF8(std::string_view text);

/// `text` with each malformed sequence replaced by one U+FFFD.
std::string wellFormedUTF8(std::string_view text);

/// UTF-8 to UTF-16 in the machine's byte order; each malformed sequence becomes one U+FFFD.
std::u16string utf16FromUTF8(std::string_view text);

/// UTF-16 in the machine's byte order to UTF-8; a lone surrogate becomes U+FFFD.
std::string utf8FromUTF16(std::u16string_view text);

/// Appends the UTF-8 form of `codePoint`, a Unicode scalar value.
void appendUTF8(std::string& out, char32_t codePoint);

/// The encodings that a mark or a pattern of zeros tells apart.
enum class TextEncoding {
  utf8,
  utf16LittleEndian,
  utf16BigEndian,
  utf32LittleEndian,
  utf32BigEndian
};

/// A mark at the beginning of a text that tells its encoding.
struct ByteOrderMark {
  TextEncoding encoding;
  std::size_t length;
};

/// The mark that `bytes` begin with; nothing where there is none.
std::optional<ByteOrderMark> byteOrderMarkOf(std::string_view bytes);

/// The UTF-8 form of `bytes`, whose encoding is known and whose byte order mark is already gone.
/// Gives false, with `out` unspecified, for a malformed text: a lone surrogate, a stray byte at the
/// end, a value that is no scalar.
bool convertToUTF8(std::string_view bytes, TextEncoding encoding, std::string& out);

}  // namespace tavlen
