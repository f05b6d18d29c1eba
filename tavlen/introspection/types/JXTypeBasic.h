#pragma once

#include <memory>
#include <string>

#include "tavlen/foundation/base/API.h"
#include "tavlen/introspection/types/JXPrimitiveType.h"
#include "tavlen/introspection/types/JXType.h"

namespace tavlen {

/// A type of one character. All characters that do not begin another type are basic types; unknown
/// ones are printed as `void`.
class TAVLEN_API JXTypeBasic final : public JXType {
 public:
  /// Whether an encoding that begins with `character` is of this class.
  static bool supportsEncoding(char character);

  /// Parses one character, whatever it is; at the end of the text, none.
  static std::shared_ptr<JXTypeBasic> initWithEncoding(JXTypeCursor& cursor,
                                                       JXTypeQualifiers qualifiers);
  /// Builds a node. `void_` and invalid values are encoded as the character 0.
  static std::shared_ptr<JXTypeBasic> initWithPrimitiveType(JXPrimitiveType type);

  /// The kind of the type.
  JXPrimitiveType primitiveType() const;

  /// For the functions above, which need a public constructor for std::make_shared.
  JXTypeBasic(Key /*key*/, SharedText encoding, JXTypeQualifiers qualifiers)
      : JXType(std::move(encoding), qualifiers, 0) {}

 private:
  void appendOwnHead(std::string& out, bool padding, JXTypeBodies /*bodies*/) const override;
  void appendOwnTail(std::string& /*out*/) const override {}
  bool hasSameParts(const JXType& /*other*/) const override { return true; }
};

}  // namespace tavlen
