#include "tavlen/foundation/json/detail/JSONText.h"

#include <array>

#include "tavlen/foundation/coding/CodingError.h"
#include "tavlen/foundation/text/Unicode.h"

namespace tavlen {

namespace {

struct Detected {
  TextEncoding encoding;
  std::size_t markLength;
};

Detected encodingFromMark(std::string_view bytes) {
  using namespace std::string_view_literals;
  struct Mark {
    std::string_view bytes;
    TextEncoding encoding;
  };
  // The order decides: the platform reads FE FF 00 00 as UTF-32, and FF FE always as UTF-16. Both
  // are kept, so that a document means the same here as there.
  static constexpr std::array<Mark, 5> kMarks = {{
      {"\xEF\xBB\xBF"sv, TextEncoding::utf8},
      {"\x00\x00\xFE\xFF"sv, TextEncoding::utf32BigEndian},
      {"\xFE\xFF\x00\x00"sv, TextEncoding::utf32LittleEndian},
      {"\xFE\xFF"sv, TextEncoding::utf16BigEndian},
      {"\xFF\xFE"sv, TextEncoding::utf16LittleEndian},
  }};
  for (const Mark& mark : kMarks) {
    if (bytes.starts_with(mark.bytes)) return {mark.encoding, mark.bytes.size()};
  }
  return {TextEncoding::utf8, 0};
}

/// JSON begins with two ASCII characters or is shorter, so the zeros among the first bytes tell the
/// width.
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
  const Detected mark = encodingFromMark(bytes);
  const TextEncoding encoding = mark.markLength > 0 ? mark.encoding : encodingFromZeros(bytes);
  view_ = bytes.substr(mark.markLength);
  if (encoding == TextEncoding::utf8) {
    if (!isValidUTF8(view_)) {
      throw DecodingError::dataCorrupted(
          "The given data was not valid JSON: the text is not UTF-8");
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
