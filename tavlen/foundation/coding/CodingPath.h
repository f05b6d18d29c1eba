#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "tavlen/foundation/base/API.h"

namespace tavlen {

/// The keys and indices that lead to a value in a document.
///
/// Errors build it from the inside outwards while they propagate, so that successful coding keeps
/// no path.
class TAVLEN_API CodingPath {
 public:
  /// Adds a key before the path.
  void prependKey(std::string_view key);
  /// Adds an array index before the path.
  void prependIndex(std::size_t index);

  /// Whether it is the root.
  bool empty() const { return reversed_.empty(); }
  /// The path for the reader: `hooks[3].args.-1.value`.
  std::string text() const;

  bool operator==(const CodingPath&) const = default;

 private:
  using Element = std::variant<std::string, std::size_t>;

  std::vector<Element> reversed_;
};

}  // namespace tavlen
