#pragma once

#include <cstdint>
#include <string>
#include <variant>
#include <vector>

#include "tavlen/foundation/base/API.h"
#include "tavlen/foundation/coding/Date.h"
#include "tavlen/foundation/text/TextPosition.h"

namespace tavlen {

/// A value of a TOML document, with its place in the text. A plain value: readers fill in the
/// positions, writers ignore them.
struct TAVLEN_API TOMLNode {
  struct Member;
  /// Values in order.
  using Array = std::vector<TOMLNode>;
  /// Members in the order of the text: that in which their keys first appear.
  using Table = std::vector<Member>;
  /// Integers that do not fit do not exist in TOML, nor do texts that are not UTF-8.
  using Value = std::variant<std::string, std::int64_t, double, bool, Date, Array, Table>;

  /// The value.
  Value value;
  /// Where the value begins. For a table or an array that headers make it is the first header, for
  /// a table that a dotted key makes it is the key.
  TextPosition position;

  /// A phrase for errors: "a string", "an array".
  const char* kind() const;
};

/// A key and its value.
struct TAVLEN_API TOMLNode::Member {
  /// Without quotes.
  std::string key;
  /// The value.
  TOMLNode value;
  /// Where the key begins.
  TextPosition position;
};

}  // namespace tavlen
