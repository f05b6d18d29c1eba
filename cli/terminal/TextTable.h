#pragma once

#include <string>
#include <vector>

namespace tavlen::cli {

/// A table in aligned columns, for people to read on the standard output.
class TextTable {
 public:
  /// Whether overlong cells of the last column are cut, as in the other columns.
  enum class LastColumn { cut, whole };

  /// `titles` are the column titles, in UTF-8.
  explicit TextTable(std::vector<std::string> titles, LastColumn last = LastColumn::cut);

  /// From now on, no cell is cut, whatever its column.
  void keepWhole() { cutsNothing_ = true; }

  /// Adds a row. The number of `cells` must match the titles. Control characters are escaped.
  void addRow(const std::vector<std::string>& cells);

  /// The title line and the rows. Columns that are empty in all rows are left out.
  std::string text() const;

 private:
  std::vector<std::vector<std::string>> rows_;  ///< the titles first
  LastColumn last_;
  bool cutsNothing_ = false;
};

}  // namespace tavlen::cli
