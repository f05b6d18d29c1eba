#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace tavlen::cli {

/// How many columns of a terminal `text`, one line, takes: wide characters take two, combining ones
/// none.
std::size_t displayWidth(std::string_view text);

/// Lines of cells in aligned columns, for people to read.
class TextTable {
 public:
  /// Whether an overlong cell of the last column is cut, as those of the others are.
  enum class LastColumn { cut, whole };

  explicit TextTable(std::vector<std::string> titles, LastColumn last = LastColumn::cut);

  /// `cells` are as many as there are titles; what would break the line is written as escapes.
  void addRow(const std::vector<std::string>& cells);

  /// The title line and the rows. A column in which no row has a text is left out.
  std::string text() const;

 private:
  std::vector<std::vector<std::string>> rows_;  ///< the titles first
  LastColumn last_;
};

}  // namespace tavlen::cli
