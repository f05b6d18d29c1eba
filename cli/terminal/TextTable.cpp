#include "cli/terminal/TextTable.h"

#include <unicode/uchar.h>
#include <unicode/utf8.h>

#include <algorithm>
#include <cstdint>
#include <utility>

#include "cli/terminal/Console.h"
#include "tavlen/foundation/text/EscapedText.h"
#include "tavlen/foundation/text/Unicode.h"

namespace tavlen::cli {

namespace {

constexpr UChar32 kSoftHyphen = 0xAD;
/// Wider cells are cut, so that one long name does not push the other columns off the screen.
constexpr std::size_t kWidestCell = 60;

std::size_t widthOf(UChar32 character) {
  switch (u_charType(character)) {
    case U_NON_SPACING_MARK:
    case U_ENCLOSING_MARK:
      return 0;
    case U_FORMAT_CHAR:
      return character == kSoftHyphen ? 1 : 0;
    default:
      break;
  }
  // The vowels and finals of a decomposed Hangul syllable are drawn in the cell of its first
  // letter.
  const int syllable = u_getIntPropertyValue(character, UCHAR_HANGUL_SYLLABLE_TYPE);
  if (syllable == U_HST_VOWEL_JAMO || syllable == U_HST_TRAILING_JAMO) return 0;
  const auto width =
      static_cast<UEastAsianWidth>(u_getIntPropertyValue(character, UCHAR_EAST_ASIAN_WIDTH));
  return width == U_EA_WIDE || width == U_EA_FULLWIDTH ? 2 : 1;
}

}  // namespace

std::size_t displayWidth(std::string_view text) {
  constexpr UChar32 kZeroWidthJoiner = 0x200D;
  constexpr UChar32 kEmojiSelector = 0xFE0F;
  std::size_t width = 0;
  std::size_t last = 0;  // the width of the previous character
  bool isJoined = false;
  const auto length = static_cast<std::int64_t>(text.size());
  for (std::int64_t i = 0; i < length;) {
    UChar32 character = 0;
    U8_NEXT_OR_FFFD(reinterpret_cast<const std::uint8_t*>(text.data()), i, length, character);
    // Joined emoji are drawn as one character, and a skin tone modifies the previous one.
    const bool isPart = isJoined || u_hasBinaryProperty(character, UCHAR_EMOJI_MODIFIER);
    // A character that can be drawn as text or as emoji becomes wide as an emoji.
    const bool widens = character == kEmojiSelector && last == 1;
    last = widens ? 1 : isPart && width != 0 ? 0 : widthOf(character);
    width += last;
    isJoined = character == kZeroWidthJoiner;
  }
  return width;
}

namespace {

/// Cuts `text` to kWidestCell. A character that is cut in the middle becomes a replacement
/// character.
std::string cut(std::string text) {
  if (displayWidth(text) <= kWidestCell) return text;
  // A character has at least as many bytes as columns, so every removed byte narrows the text by at
  // most one column.
  while (displayWidth(text) > kWidestCell - 1)
    text.resize(std::min(text.size() - 1, 8 * kWidestCell));
  return wellFormedUTF8(text) + "\u2026";
}

}  // namespace

TextTable::TextTable(std::vector<std::string> titles, LastColumn last) : last_(last) {
  rows_.push_back(std::move(titles));
}

void TextTable::addRow(const std::vector<std::string>& cells) {
  std::vector<std::string>& row = rows_.emplace_back();
  for (const std::string& cell : cells) {
    const bool isWhole = last_ == LastColumn::whole && row.size() + 1 == cells.size();
    row.push_back(isWhole ? escapedForTerminal(cell) : cut(escapedForTerminal(cell)));
  }
}

std::string TextTable::text() const {
  std::vector<std::size_t> widths(rows_.front().size());
  for (std::size_t column = 0; column < widths.size(); ++column) {
    const bool isUsed = std::any_of(rows_.begin() + 1, rows_.end(),
                                    [&](const auto& row) { return !row[column].empty(); });
    for (const auto& row : rows_) {
      if (isUsed) widths[column] = std::max(widths[column], displayWidth(row[column]));
    }
  }
  std::string text;
  for (const auto& row : rows_) {
    std::string line;
    std::size_t place = 0;  // where the next cell begins
    std::size_t used = 0;
    for (std::size_t column = 0; column < widths.size(); ++column) {
      if (widths[column] == 0) continue;
      if (!row[column].empty()) {
        line.append(place - used, ' ');
        line += row[column];
        used = place + displayWidth(row[column]);
      }
      place += widths[column] + 2;
    }
    text += line + "\n";
  }
  return text;
}

}  // namespace tavlen::cli
