#include "cli/terminal/CaretLine.h"

#include <unicode/uchar.h>
#include <unicode/utf16.h>

#include <algorithm>

#include "cli/terminal/Console.h"
#include "tavlen/foundation/text/EscapedText.h"
#include "tavlen/foundation/text/Unicode.h"

namespace tavlen::cli {

namespace {

constexpr std::string_view kIndent = "    ";
constexpr std::string_view kEllipsis = "...";
/// The number of UTF-16 units shown before the column, and from it on.
constexpr std::size_t kContext = 100;

/// The width of the character in terminal cells.
std::size_t cellsOf(UChar32 character) {
  const auto type = u_charType(character);
  if (type == U_NON_SPACING_MARK || type == U_ENCLOSING_MARK || type == U_FORMAT_CHAR) return 0;
  const int width = u_getIntPropertyValue(character, UCHAR_EAST_ASIAN_WIDTH);
  return width == U_EA_WIDE || width == U_EA_FULLWIDTH ? 2 : 1;
}

}  // namespace

std::string caretLine(std::string_view line, std::size_t column) {
  const std::u16string units = utf16FromUTF8(line);
  const std::size_t caret = std::min(column - 1, units.size());
  std::string shown(kIndent);
  std::string below(kIndent);
  std::size_t i = 0;
  if (caret > kContext) {
    i = caret - kContext;
    U16_SET_CP_START(units.data(), 0, i);
    shown += kEllipsis;
    below.append(kEllipsis.size(), ' ');
  }
  while (i < units.size() && (i < caret || i - caret < kContext)) {
    const bool isBefore = i < caret;
    UChar32 character = 0;
    U16_NEXT(units.data(), i, units.size(), character);
    std::string text;
    appendUTF8(text, static_cast<char32_t>(character));
    const std::string safe = character == '\t' ? text : escapedForTerminal(text);
    const std::size_t cells = safe == text ? cellsOf(character) : safe.size();
    if (isBefore) below.append(character == '\t' ? 1 : cells, character == '\t' ? '\t' : ' ');
    shown += safe;
  }
  if (i < units.size()) shown += kEllipsis;
  return shown + "\n" + below + "^\n";
}

}  // namespace tavlen::cli
