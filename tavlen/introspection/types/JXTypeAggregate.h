#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "tavlen/introspection/types/JXTypeComplex.h"

namespace tavlen {

/// A struct or a union, which differ in their delimiters and in what C calls them.
template <char kStart, char kEnd>
class JXTypeAggregate final : public JXTypeComplex {
 public:
  static constexpr char kStartDelimiter = kStart;
  static constexpr char kEndDelimiter = kEnd;

  static bool supportsEncoding(char character) { return character == kStartDelimiter; }

  static std::shared_ptr<JXTypeAggregate> initWithEncoding(JXTypeCursor& cursor,
                                                           JXTypeQualifiers qualifiers) {
    return std::make_shared<JXTypeAggregate>(Key(), read(cursor, qualifiers, kEndDelimiter));
  }
  /// No closing delimiter is written. Names without a body are kept, but not in the encoding.
  /// Throws std::invalid_argument for a null among `types`, std::length_error for one of
  /// kMaximumDepth levels.
  static std::shared_ptr<JXTypeAggregate> initWithName(
      const std::optional<std::string>& name, std::optional<Types> types,
      const std::optional<std::vector<std::string>>& fieldNames) {
    return std::make_shared<JXTypeAggregate>(
        Key(), build(kStartDelimiter, name, std::move(types), fieldNames));
  }

  std::string_view typeName() const override { return kStart == '{' ? "struct" : "union"; }

  JXTypeAggregate(Key /*key*/, Parts parts) : JXTypeComplex(std::move(parts)) {}
};

using JXTypeStruct = JXTypeAggregate<'{', '}'>;
using JXTypeUnion = JXTypeAggregate<'(', ')'>;

}  // namespace tavlen
