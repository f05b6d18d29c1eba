#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "tavlen/introspection/types/JXTypeComplex.h"

namespace tavlen {

/// A struct or a union; they differ in their delimiters and in their keyword in C.
template <char kStart, char kEnd>
class JXTypeAggregate final : public JXTypeComplex {
 public:
  /// The opening delimiter.
  static constexpr char kStartDelimiter = kStart;
  /// The closing delimiter.
  static constexpr char kEndDelimiter = kEnd;

  /// Whether an encoding that begins with `character` is of this class.
  static bool supportsEncoding(char character) { return character == kStartDelimiter; }

  /// Parses at the cursor, which is at the opening delimiter, and moves past the type. Called by
  /// JXTypeWithEncoding().
  static std::shared_ptr<JXTypeAggregate> initWithEncoding(JXTypeCursor& cursor,
                                                           JXTypeQualifiers qualifiers) {
    return std::make_shared<JXTypeAggregate>(Key(), read(cursor, qualifiers, kEndDelimiter));
  }
  /// Builds a node. Its encoding has no closing delimiter. Field names without a body are stored,
  /// but are not part of the encoding. Throws std::invalid_argument for a null among `types`,
  /// std::length_error for one with kMaximumDepth levels.
  static std::shared_ptr<JXTypeAggregate> initWithName(
      const std::optional<std::string>& name, std::optional<Types> types,
      const std::optional<std::vector<std::string>>& fieldNames) {
    return std::make_shared<JXTypeAggregate>(
        Key(), build(kStartDelimiter, name, std::move(types), fieldNames));
  }

  std::string_view typeName() const override { return kStart == '{' ? "struct" : "union"; }

  /// For the functions above, which need a public constructor for std::make_shared.
  JXTypeAggregate(Key /*key*/, Parts parts) : JXTypeComplex(std::move(parts)) {}
};

/// A struct: `{name=...}`.
using JXTypeStruct = JXTypeAggregate<'{', '}'>;
/// A union: `(name=...)`.
using JXTypeUnion = JXTypeAggregate<'(', ')'>;

}  // namespace tavlen
