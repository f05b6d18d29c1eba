#include "tavlen/foundation/errors/detail/StringTable.h"

#include <array>
#include <cstdint>
#include <utility>

#include "tavlen/foundation/plist/PropertyListSerialization.h"
#include "tavlen/foundation/plist/SharedReferenceBudget.h"
#include "tavlen/foundation/text/Characters.h"
#include "tavlen/foundation/text/Unicode.h"

namespace tavlen {

namespace {

constexpr char16_t kReplacement = 0xFFFD;
/// The memory of an entry, without its texts.
constexpr std::size_t kEntryBytes = 112;

/// The upper half of the NextStep encoding. Its last two bytes are unassigned.
constexpr std::array<char16_t, 128> kNextStep = {
    0x00A0, 0x00C0, 0x00C1, 0x00C2, 0x00C3, 0x00C4, 0x00C5, 0x00C7,  // 0x80
    0x00C8, 0x00C9, 0x00CA, 0x00CB, 0x00CC, 0x00CD, 0x00CE, 0x00CF,  //
    0x00D0, 0x00D1, 0x00D2, 0x00D3, 0x00D4, 0x00D5, 0x00D6, 0x00D9,  // 0x90
    0x00DA, 0x00DB, 0x00DC, 0x00DD, 0x00DE, 0x00B5, 0x00D7, 0x00F7,  //
    0x00A9, 0x00A1, 0x00A2, 0x00A3, 0x2044, 0x00A5, 0x0192, 0x00A7,  // 0xA0
    0x00A4, 0x2019, 0x201C, 0x00AB, 0x2039, 0x203A, 0xFB01, 0xFB02,  //
    0x00AE, 0x2013, 0x2020, 0x2021, 0x00B7, 0x00A6, 0x00B6, 0x2022,  // 0xB0
    0x201A, 0x201E, 0x201D, 0x00BB, 0x2026, 0x2030, 0x00AC, 0x00BF,  //
    0x00B9, 0x02CB, 0x00B4, 0x02C6, 0x02DC, 0x00AF, 0x02D8, 0x02D9,  // 0xC0
    0x00A8, 0x00B2, 0x02DA, 0x00B8, 0x00B3, 0x02DD, 0x02DB, 0x02C7,  //
    0x2014, 0x00B1, 0x00BC, 0x00BD, 0x00BE, 0x00E0, 0x00E1, 0x00E2,  // 0xD0
    0x00E3, 0x00E4, 0x00E5, 0x00E7, 0x00E8, 0x00E9, 0x00EA, 0x00EB,  //
    0x00EC, 0x00C6, 0x00ED, 0x00AA, 0x00EE, 0x00EF, 0x00F0, 0x00F1,  // 0xE0
    0x0141, 0x00D8, 0x0152, 0x00BA, 0x00F2, 0x00F3, 0x00F4, 0x00F5,  //
    0x00F6, 0x00E6, 0x00F9, 0x00FA, 0x00FB, 0x0131, 0x00FC, 0x00FD,  // 0xF0
    0x0142, 0x00F8, 0x0153, 0x00DF, 0x00FE, 0x00FF, 0xFFFD, 0xFFFD,  //
};

/// The value of a digit in any base up to 16; 16 for other characters.
constexpr std::uint32_t digitValue(char character) {
  if (isDigit(character)) return static_cast<std::uint32_t>(character - '0');
  if (character >= 'a' && character <= 'f') return static_cast<std::uint32_t>(character - 'a') + 10;
  if (character >= 'A' && character <= 'F') return static_cast<std::uint32_t>(character - 'A') + 10;
  return 16;
}

constexpr bool standsUnquoted(char character) {
  return isLetter(character) || isDigit(character) ||
         std::string_view("_$/:.-").find(character) != std::string_view::npos;
}

/// Consumes tokens from the front of a UTF-8 text.
class Scanner {
 public:
  explicit Scanner(std::string_view text) : rest_(text) {}

  bool atEnd() const { return rest_.empty(); }
  bool take(std::string_view token) {
    if (!rest_.starts_with(token)) return false;
    rest_.remove_prefix(token.size());
    return true;
  }
  void skipBlanksAndComments();
  std::optional<std::string> takeString();

 private:
  bool takeBlank();
  void skipLine();
  std::string takeUnquoted();
  std::optional<std::string> takeQuoted(char quote);
  void takeEscape(std::string& out);
  void takeUnicodeEscape(std::string& out);
  std::optional<char16_t> takeUnit();
  std::uint32_t takeDigits(std::uint32_t base, std::size_t most);

  std::string_view rest_;
};

constexpr std::string_view kLineSeparator = "\u2028";
constexpr std::string_view kParagraphSeparator = "\u2029";

bool Scanner::takeBlank() {
  if (rest_.empty()) return false;
  if (rest_[0] == ' ' || (rest_[0] >= '\t' && rest_[0] <= '\r')) {
    rest_.remove_prefix(1);
    return true;
  }
  return take(kLineSeparator) || take(kParagraphSeparator);
}

void Scanner::skipLine() {
  while (!rest_.empty() && rest_[0] != '\n' && rest_[0] != '\r' &&
         !rest_.starts_with(kLineSeparator) && !rest_.starts_with(kParagraphSeparator)) {
    rest_.remove_prefix(1);
  }
}

void Scanner::skipBlanksAndComments() {
  for (;;) {
    if (takeBlank()) continue;
    if (take("//")) {
      skipLine();
    } else if (take("/*")) {
      // A comment that is never closed extends to the end of the file, as on the platform.
      const std::size_t end = rest_.find("*/");
      rest_.remove_prefix(end == std::string_view::npos ? rest_.size() : end + 2);
    } else {
      return;
    }
  }
}

std::optional<std::string> Scanner::takeString() {
  if (take("\"")) return takeQuoted('"');
  if (take("'")) return takeQuoted('\'');
  std::string token = takeUnquoted();
  if (token.empty()) return std::nullopt;
  return token;
}

std::string Scanner::takeUnquoted() {
  std::size_t length = 0;
  while (length < rest_.size() && standsUnquoted(rest_[length])) ++length;
  std::string token(rest_.substr(0, length));
  rest_.remove_prefix(length);
  return token;
}

std::optional<std::string> Scanner::takeQuoted(char quote) {
  std::string out;
  while (!rest_.empty()) {
    const char character = rest_[0];
    rest_.remove_prefix(1);
    if (character == quote) return out;
    if (character == '\\') {
      takeEscape(out);
    } else {
      out += character;
    }
  }
  return std::nullopt;
}

/// Takes the rest of an escape sequence, after its backslash. Takes nothing at the end of the text,
/// where the string is unterminated anyway.
void Scanner::takeEscape(std::string& out) {
  if (rest_.empty()) return;
  const char letter = rest_[0];
  if (digitValue(letter) < 8) {
    const std::uint32_t byte = takeDigits(8, 3) & 0xFF;
    appendUTF8(out, byte < 0x80 ? byte : static_cast<char32_t>(kNextStep[byte - 0x80]));
    return;
  }
  if (letter == 'U' && rest_.size() > 1 && digitValue(rest_[1]) < 16) {
    takeUnicodeEscape(out);
    return;
  }
  constexpr std::string_view kLetters = "abfnrtv";
  constexpr std::string_view kMeanings = "\a\b\f\n\r\t\v";
  const std::size_t index = kLetters.find(letter);
  // Any other character means itself. Only the first byte of a longer one is taken here; the rest
  // follows as ordinary text.
  out += index == std::string_view::npos ? letter : kMeanings[index];
  rest_.remove_prefix(1);
}

/// Reads "U00E9", and the surrogate pair "UD83D\UDE00" as one character.
void Scanner::takeUnicodeEscape(std::string& out) {
  std::u16string units(1, takeUnit().value_or(kReplacement));
  if (units[0] >= 0xD800 && units[0] <= 0xDBFF) {
    const std::string_view afterHigh = rest_;
    const std::optional<char16_t> low = take("\\") ? takeUnit() : std::nullopt;
    if (low && *low >= 0xDC00 && *low <= 0xDFFF) {
      units += *low;
    } else {
      rest_ = afterHigh;
    }
  }
  out += utf8FromUTF16(units);
}

std::optional<char16_t> Scanner::takeUnit() {
  if (!take("U") || rest_.empty() || digitValue(rest_[0]) >= 16) return std::nullopt;
  return static_cast<char16_t>(takeDigits(16, 4));
}

std::uint32_t Scanner::takeDigits(std::uint32_t base, std::size_t most) {
  std::uint32_t value = 0;
  for (; most > 0 && !rest_.empty() && digitValue(rest_[0]) < base; --most) {
    value = value * base + digitValue(rest_[0]);
    rest_.remove_prefix(1);
  }
  return value;
}

}  // namespace

std::optional<StringTable> StringTable::read(std::string_view bytes) {
  if (!propertyListFormatOf(bytes)) {
    const std::optional<std::string> text = textFromBytes(bytes);
    return text ? parse(*text) : std::nullopt;
  }
  try {
    const PropertyList list = readPropertyList(bytes);
    const auto dictionary = list.get<PropertyList::Dictionary>(list.root());
    if (!dictionary) return std::nullopt;
    SharedReferenceBudget budget(list);
    StringTable table;
    for (const auto& [key, value] : dictionary->members) {
      const auto text = list.get<std::string_view>(value);
      if (!text) continue;
      budget.chargeBytes(kEntryBytes);
      table.entries_.insert_or_assign(std::string(budget.chargedText(list.string(key))),
                                      std::string(budget.chargedText(*text)));
    }
    return table;
  } catch (const DecodingError&) {
    return std::nullopt;
  }
}

std::optional<StringTable> StringTable::parse(std::string_view text) {
  StringTable table;
  Scanner scanner(text);
  for (scanner.skipBlanksAndComments(); !scanner.atEnd(); scanner.skipBlanksAndComments()) {
    std::optional<std::string> key = scanner.takeString();
    if (!key) return std::nullopt;
    scanner.skipBlanksAndComments();
    std::optional<std::string> value = key;
    if (scanner.take("=")) {
      scanner.skipBlanksAndComments();
      value = scanner.takeString();
      if (!value) return std::nullopt;
      scanner.skipBlanksAndComments();
    }
    if (!scanner.take(";")) return std::nullopt;
    table.entries_.insert_or_assign(std::move(*key), std::move(*value));
  }
  return table;
}

const std::string* StringTable::find(std::string_view key) const {
  const auto entry = entries_.find(key);
  return entry == entries_.end() ? nullptr : &entry->second;
}

}  // namespace tavlen
