#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace tavlen {

/// Where in a document a value stands: the keys and indices that lead to it.
///
/// It is built from the inside outwards while an error unwinds, so that coding itself keeps no
/// path.
class CodingPath {
 public:
  void prependKey(std::string_view key);
  void prependIndex(std::size_t index);

  bool empty() const { return reversed_.empty(); }
  /// The path as people write it: `hooks[3].args.-1.value`. Overlong keys and
  /// the middle of an overlong path are left out.
  std::string text() const;

  bool operator==(const CodingPath&) const = default;

 private:
  using Element = std::variant<std::string, std::size_t>;

  std::vector<Element> reversed_;
};

/// `text` cut to what fits a message, with an ellipsis where something is left out.
std::string abbreviated(std::string_view text);

}  // namespace tavlen
