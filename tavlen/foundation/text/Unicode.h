#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

#include "tavlen/foundation/base/API.h"

namespace tavlen {

/// Whether all bytes of `text` are ASCII.
TAVLEN_API bool isASCII(std::string_view text);

/// Whether `text` is well-formed UTF-8: no overlong forms, no surrogates, nothing above U+10FFFF.
TAVLEN_API bool isValidUTF8(std::string_view text);
/// The length in bytes of the longest beginning of `text` that is well-formed UTF-8.
TAVLEN_API std::size_t validUTF8Length(std::string_view text);

/// `text` with each malformed sequence replaced by one U+FFFD.
TAVLEN_API std::string wellFormedUTF8(std::string_view text);

/// Converts UTF-8 to UTF-16 in native byte order; each malformed sequence becomes one U+FFFD.
TAVLEN_API std::u16string utf16FromUTF8(std::string_view text);

/// Converts UTF-16 in native byte order to UTF-8; a lone surrogate becomes U+FFFD.
TAVLEN_API std::string utf8FromUTF16(std::u16string_view text);

/// Appends the UTF-8 form of `codePoint`, which must be a Unicode scalar value.
TAVLEN_API void appendUTF8(std::string& out, char32_t codePoint);

/// The encodings that a byte order mark or a pattern of zero bytes reveals.
enum class TextEncoding {
  utf8,
  utf16LittleEndian,
  utf16BigEndian,
  utf32LittleEndian,
  utf32BigEndian
};

/// A byte order mark at the beginning of a text.
struct TAVLEN_API ByteOrderMark {
  /// The encoding that it names.
  TextEncoding encoding;
  /// In bytes.
  std::size_t length;
};

/// The byte order mark at the beginning of `bytes`, if any.
TAVLEN_API std::optional<ByteOrderMark> byteOrderMarkOf(std::string_view bytes);

/// Converts `bytes`, in a known encoding and without a byte order mark, to UTF-8 in `out`. Returns
/// false, with `out` unspecified, for malformed text: a lone surrogate, a stray byte at the end, a
/// value that is no scalar.
TAVLEN_API bool convertToUTF8(std::string_view bytes, TextEncoding encoding, std::string& out);

/// The text in `bytes`, as a file holds it, in UTF-8. A byte order mark selects UTF-32 or UTF-16
/// and is dropped; without one the text is UTF-8. Returns nothing for malformed text: no other
/// encoding is tried.
TAVLEN_API std::optional<std::string> textFromBytes(std::string_view bytes);

}  // namespace tavlen
