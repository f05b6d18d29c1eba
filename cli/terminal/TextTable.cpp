#include "cli/terminal/TextTable.h"

#include <unistd.h>

#include <algorithm>
#include <utility>

#include "cli/terminal/Color.h"
#include "cli/terminal/DisplayWidth.h"
#include "tavlen/foundation/text/EscapedText.h"
#include "tavlen/foundation/text/Unicode.h"

namespace tavlen::cli {

namespace {

/// Wider cells are cut, so that one long name does not push the other columns off the screen.
constexpr std::size_t kWidestCell = 60;

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
    const bool isWhole =
        cutsNothing_ || (last_ == LastColumn::whole && row.size() + 1 == cells.size());
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
        line += &row == &rows_.front() ? colored(row[column], ColorRole::heading, STDOUT_FILENO)
                                       : row[column];
        used = place + displayWidth(row[column]);
      }
      place += widths[column] + 2;
    }
    text += line + "\n";
  }
  return text;
}

}  // namespace tavlen::cli
