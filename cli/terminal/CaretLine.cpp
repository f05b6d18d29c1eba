#include "cli/terminal/CaretLine.h"

#include <unicode/utf16.h>

#include <algorithm>

#include "cli/terminal/DisplayWidth.h"
#include "tavlen/foundation/text/EscapedText.h"
#include "tavlen/foundation/text/Unicode.h"

namespace tavlen::cli {

namespace {

constexpr std::string_view kIndent = "    ";
constexpr std::u16string_view kEllipsis = u"...";
/// The number of UTF-16 units shown before the column, and from it on.
constexpr std::size_t kContext = 100;

/// Appends `text` to `shown`, escaped except for its tabs, and to `blanks` as many blanks and tabs
/// as it takes.
void append(std::u16string_view text, std::string& shown, std::string& blanks) {
  for (;;) {
    const std::size_t tab = std::min(text.find(u'\t'), text.size());
    const std::string part = escapedForTerminal(utf8FromUTF16(text.substr(0, tab)));
    shown += part;
    blanks.append(displayWidth(part), ' ');
    if (tab == text.size()) return;
    shown += '\t';
    blanks += '\t';
    text.remove_prefix(tab + 1);
  }
}

}  // namespace

std::string caretLine(std::string_view line, std::size_t column) {
  const std::u16string units = utf16FromUTF8(line);
  const std::size_t size = units.size();
  std::size_t caret = std::min(column - 1, size);
  std::size_t begin = caret - std::min(caret, kContext);
  std::size_t end = caret + std::min(size - caret, kContext);
  // Whole characters.
  U16_SET_CP_START(units.data(), 0, begin);
  U16_SET_CP_LIMIT(units.data(), 0, caret, size);
  U16_SET_CP_LIMIT(units.data(), 0, end, size);
  std::string shown(kIndent);
  std::string below(kIndent);
  if (begin > 0) append(kEllipsis, shown, below);
  const std::u16string_view text = units;
  append(text.substr(begin, caret - begin), shown, below);
  std::string ignored;
  append(text.substr(caret, end - caret), shown, ignored);
  if (end < size) append(kEllipsis, shown, ignored);
  return shown + "\n" + below + "^\n";
}

}  // namespace tavlen::cli
