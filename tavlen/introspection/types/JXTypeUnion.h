#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "tavlen/introspection/types/JXTypeComplex.h"

namespace tavlen {

class JXTypeUnion final : public JXTypeComplex {
 public:
  static constexpr char kStartDelimiter = '(';
  static constexpr char kEndDelimiter = ')';

  static bool supportsEncoding(char character) { return character == kStartDelimiter; }

  static std::shared_ptr<JXTypeUnion> initWithEncoding(JXTypeCursor& cursor,
                                                       JXTypeQualifiers qualifiers);
  /// No closing delimiter is written. Names without a body are kept, but not in the encoding.
  /// Throws std::invalid_argument for a null among `types`, std::length_error for one of
  /// kMaximumDepth levels.
  static std::shared_ptr<JXTypeUnion> initWithName(
      const std::optional<std::string>& name, std::optional<Types> types,
      const std::optional<std::vector<std::string>>& fieldNames);

  std::string_view typeName() const override { return "union"; }

  JXTypeUnion(Key /*key*/, Parts parts) : JXTypeComplex(std::move(parts)) {}
};

}  // namespace tavlen
