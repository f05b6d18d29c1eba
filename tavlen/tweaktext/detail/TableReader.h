#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "tavlen/foundation/toml/TOMLError.h"
#include "tavlen/foundation/toml/TOMLNode.h"

namespace tavlen {

/// Returns the value if it is of that kind. Otherwise throws TOMLError "expected `expected`, found
/// ...".
template <class Value>
const Value& expectKind(const TOMLNode& node, std::string_view expected) {
  if (const auto* value = std::get_if<Value>(&node.value)) return *value;
  throw TOMLError(node.position,
                  "expected " + std::string(expected) + ", found " + std::string(node.kind()));
}

/// The text in `node`. Throws TOMLError.
inline const std::string& expectText(const TOMLNode& node) {
  return expectKind<std::string>(node, "a string");
}

/// Looks up the members of a table with known keys. Errors: TOMLError. Refers to the node.
class TableReader {
 public:
  /// Requires a table with no other keys than `known`.
  TableReader(const TOMLNode& node, const std::vector<std::string_view>& known);
  /// The same, but appends an error for each other key to `errors`, and then returns nothing.
  static std::optional<TableReader> checked(const TOMLNode& node,
                                            const std::vector<std::string_view>& known,
                                            std::vector<TOMLError>& errors);

  /// The member of that key, or null.
  const TOMLNode::Member* find(std::string_view key) const;
  /// The value of a required key.
  const TOMLNode& require(std::string_view key) const;
  /// Where the table begins.
  TextPosition position() const { return node_.position; }

 private:
  explicit TableReader(const TOMLNode& table) : node_(table) {}

  const TOMLNode& node_;
};

/// The error at the key of `member`: "unknown key "nmae"; did you mean "name"?".
TOMLError unknownKey(const TOMLNode::Member& member, const std::vector<std::string_view>& known);

}  // namespace tavlen
