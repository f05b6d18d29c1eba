#include "cli/terminal/DisplayWidth.h"

#include <unicode/uchar.h>
#include <unicode/utf8.h>

#include <cstdint>

namespace tavlen::cli {

namespace {

constexpr UChar32 kSoftHyphen = 0xAD;

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

}  // namespace tavlen::cli
