#include "tavlen/foundation/plist/detail/XMLText.h"

#include <algorithm>
#include <array>
#include <optional>
#include <utility>

#include "tavlen/foundation/plist/PropertyList.h"
#include "tavlen/foundation/text/Characters.h"
#include "tavlen/foundation/text/Unicode.h"

namespace tavlen {

namespace {

using namespace std::string_view_literals;

constexpr std::string_view kBlanks = " \t\r\n";

/// UTF-16 and UTF-32 without a byte order mark begin with '<' and its zeros. Longer patterns first,
/// because one contains another.
constexpr std::array<std::pair<std::string_view, TextEncoding>, 4> kWideStarts = {{
    {"<\0\0\0"sv, TextEncoding::utf32LittleEndian},
    {"\0\0\0<"sv, TextEncoding::utf32BigEndian},
    {"<\0"sv, TextEncoding::utf16LittleEndian},
    {"\0<"sv, TextEncoding::utf16BigEndian},
}};

/// The encoding that a byte order mark or zeros reveal; nothing when the XML declaration decides.
std::optional<ByteOrderMark> encodingHint(std::string_view bytes) {
  if (const auto mark = byteOrderMarkOf(bytes)) return mark;
  for (const auto& [start, encoding] : kWideStarts) {
    if (bytes.starts_with(start)) return ByteOrderMark{encoding, 0};
  }
  return std::nullopt;
}

std::string_view takeUntil(std::string_view& text, std::string_view ends) {
  const std::size_t length = std::min(text.find_first_of(ends), text.size());
  const std::string_view taken = text.substr(0, length);
  text.remove_prefix(length);
  return taken;
}

void skipBlanks(std::string_view& text) {
  text.remove_prefix(std::min(text.find_first_not_of(kBlanks), text.size()));
}

/// Takes `= "value"`. Values are limited to letters, digits and ".-_", so that the XML library
/// cannot see another end of the value.
std::optional<std::string_view> takeValue(std::string_view& text) {
  skipBlanks(text);
  if (!text.starts_with('=')) return std::nullopt;
  text.remove_prefix(1);
  skipBlanks(text);
  if (!text.starts_with('"') && !text.starts_with('\'')) return std::nullopt;
  const char quote = text.front();
  text.remove_prefix(1);
  const std::string_view value = takeUntil(text, std::string_view(&quote, 1));
  const auto isPlain = [](char c) {
    return isLetter(c) || isDigit(c) || c == '.' || c == '-' || c == '_';
  };
  if (text.empty() || !std::all_of(value.begin(), value.end(), isPlain)) return std::nullopt;
  text.remove_prefix(1);
  return value;
}

bool keepsASCII(std::string_view encoding) {
  const std::string name = lowercased(encoding);
  return name == "utf-8" || name == "us-ascii" || name == "ascii" ||
         name.starts_with("iso-8859-") || name.starts_with("windows-125");
}

/// Whether the text after "<?xml" is a declaration whose encoding, if any, is ASCII-compatible.
bool declaresASCII(std::string_view text) {
  for (;;) {
    skipBlanks(text);
    if (text.starts_with("?>")) return true;
    const std::string_view name = takeUntil(text, " \t\r\n=?<>\"'");
    const auto value = takeValue(text);
    if (name.empty() || !value || (name == "encoding" && !keepsASCII(*value))) return false;
  }
}

}  // namespace

XMLText::XMLText(std::string_view bytes) : view_(bytes) {
  if (const std::optional<ByteOrderMark> hint = encodingHint(bytes)) {
    isUTF8_ = true;
    view_.remove_prefix(hint->length);
    if (hint->encoding != TextEncoding::utf8) {
      if (!convertToUTF8(view_, hint->encoding, converted_)) {
        throw invalidPropertyList("The text is malformed in its encoding.");
      }
      view_ = converted_;
    }
  } else if (constexpr std::string_view kStart = "<?xml";
             view_.starts_with(kStart) && !declaresASCII(view_.substr(kStart.size()))) {
    throw invalidPropertyList("Its XML declaration is malformed or names an unsupported encoding.");
  }
  if (view_.find('\0') != std::string_view::npos) {
    throw invalidPropertyList("It contains the character U+0000.");
  }
}

}  // namespace tavlen
