#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace tavlen::cli {

/// Values with their titles, one on each line, for people to read.
class FieldList {
 public:
  /// `width` is the number of columns for a title, its colon and at least one blank.
  explicit FieldList(std::size_t width) : width_(width) {}

  /// Adds a line. Control characters of the value are escaped.
  void add(const std::string& title, const std::string& value);
  /// Adds a line for each value, with the title on the first one; "none" if there are no values.
  void addAll(const std::string& title, const std::vector<std::string>& values);

  /// The lines.
  const std::string& text() const { return text_; }

 private:
  std::size_t width_;
  std::string text_;
};

}  // namespace tavlen::cli
