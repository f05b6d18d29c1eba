#include "tavlen/foundation/json/detail/JSONText.h"

#include <optional>

#include "tavlen/foundation/coding/CodingError.h"
#include "tavlen/foundation/text/TextPosition.h"
#include "tavlen/foundation/text/Unicode.h"

namespace tavlen {

namespace {

/// The platform reads FE FF 00 00 as UTF-32, and FF FE always as UTF-16. Do the same, so that a
/// document has the same meaning here.
std::optional<ByteOrderMark> markOf(std::string_view bytes) {
  using namespace std::string_view_literals;
  if (bytes.starts_with("\xFE\xFF\0\0"sv)) return ByteOrderMark{TextEncoding::utf32LittleEndian, 4};
  if (bytes.starts_with("\xFF\xFE"sv)) return ByteOrderMark{TextEncoding::utf16LittleEndian, 2};
  return byteOrderMarkOf(bytes);
}

/// A JSON text begins with two ASCII characters or is shorter, so the zeros among its first bytes
/// reveal the width of a unit.
TextEncoding encodingFromZeros(std::string_view bytes) {
  const auto zero = [&](std::size_t i) { return bytes[i] == '\0'; };
  if (bytes.size() >= 4) {
    if (zero(0) && zero(1) && zero(2) && !zero(3)) return TextEncoding::utf32BigEndian;
    if (!zero(0) && zero(1) && zero(2) && zero(3)) return TextEncoding::utf32LittleEndian;
    if (zero(0) && !zero(1) && zero(2) && !zero(3)) return TextEncoding::utf16BigEndian;
    if (!zero(0) && zero(1) && !zero(2) && zero(3)) return TextEncoding::utf16LittleEndian;
  } else if (bytes.size() == 2) {
    if (zero(0) && !zero(1)) return TextEncoding::utf16BigEndian;
    if (!zero(0) && zero(1)) return TextEncoding::utf16LittleEndian;
  }
  return TextEncoding::utf8;
}

}  // namespace

JSONText::JSONText(std::string_view bytes) {
  const std::optional<ByteOrderMark> mark = markOf(bytes);
  const TextEncoding encoding = mark ? mark->encoding : encodingFromZeros(bytes);
  view_ = bytes.substr(mark ? mark->length : 0);
  if (encoding == TextEncoding::utf8) {
    const std::size_t valid = validUTF8Length(view_);
    if (valid < view_.size()) {
      throw DecodingError::malformedText("The given data was not valid JSON: the text is not UTF-8",
                                         TextPosition::at(view_, valid));
    }
    return;
  }
  if (!convertToUTF8(view_, encoding, converted_)) {
    throw DecodingError::dataCorrupted(
        "The given data was not valid JSON: the text is malformed in its encoding");
  }
  view_ = converted_;
}

}  // namespace tavlen
