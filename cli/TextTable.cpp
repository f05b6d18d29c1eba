#include "cli/TextTable.h"

#include <unicode/uchar.h>
#include <unicode/utf8.h>

#include <algorithm>
#include <cstdint>
#include <utility>

#include "cli/Console.h"
#include "tavlen/foundation/TerminalText.h"

namespace tavlen::cli {

namespace {

std::size_t widthOf(UChar32 character) {
  switch (u_charType(character)) {
    case U_NON_SPACING_MARK:
    case U_ENCLOSING_MARK:
    case U_FORMAT_CHAR:
      return 0;
    default:
      break;
  }
  const auto width =
      static_cast<UEastAsianWidth>(u_getIntPropertyValue(character, UCHAR_EAST_ASIAN_WIDTH));
  return width == U_EA_WIDE || width == U_EA_FULLWIDTH ? 2 : 1;
}

}  // namespace

std::size_t displayWidth(std::string_view text) {
  constexpr UChar32 kZeroWidthJoiner = 0x200D;
  constexpr UChar32 kEmojiSelector = 0xFE0F;
  std::size_t width = 0;
  std::size_t last = 0;  // the width of the character before
  bool isJoined = false;
  const auto length = static_cast<std::int64_t>(text.size());
  for (std::int64_t i = 0; i < length;) {
    UChar32 character = 0;
    U8_NEXT_OR_FFFD(reinterpret_cast<const std::uint8_t*>(text.data()), i, length, character);
    // Joined emoji are drawn as one, and a skin tone upon the one before.
    const bool isPart = isJoined || u_hasBinaryProperty(character, UCHAR_EMOJI_MODIFIER);
    // A sign that can be drawn as text or as emoji is wide as an emoji.
    const bool widens = character == kEmojiSelector && last == 1;
    last = widens ? 1 : isPart && width != 0 ? 0 : widthOf(character);
    width += last;
    isJoined = character == kZeroWidthJoiner;
  }
  return width;
}

TextTable::TextTable(std::vector<std::string> titles) { rows_.push_back(std::move(titles)); }

void TextTable::addRow(const std::vector<std::string>& cells) {
  std::vector<std::string>& row = rows_.emplace_back();
  for (const std::string& cell : cells) row.push_back(oneLine(cell));
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
