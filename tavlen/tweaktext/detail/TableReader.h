#pragma once

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
  /// Instead of an error about a missing key, which may be one of the unknown keys that were found.
  struct KeyMissing {};

  /// Requires a table. Appends an error for each key other than `known` to `errors`.
  TableReader(const TOMLNode& node, const std::vector<std::string_view>& known,
              std::vector<TOMLError>& errors);

  /// The member of that key, or null.
  const TOMLNode::Member* find(std::string_view key) const;
  /// The value of a required key. Throws KeyMissing after an unknown key.
  const TOMLNode& require(std::string_view key) const;
  /// Throws TOMLError with `text` at the table, or KeyMissing after an unknown key.
  [[noreturn]] void failMissing(std::string text) const;

 private:
  const TOMLNode& node_;
  bool hasUnknown_ = false;
};

/// The error at the key of `member`: "unknown key "nmae"; did you mean "name"?".
TOMLError unknownKey(const TOMLNode::Member& member, const std::vector<std::string_view>& known);

}  // namespace tavlen
