#pragma once

#include <memory>
#include <string>

#include "tavlen/introspection/types/JXPrimitiveType.h"
#include "tavlen/introspection/types/JXType.h"

namespace tavlen {

/// A type of one character. Every character that begins no other type is one, and prints `void`
/// where it stands for nothing.
class JXTypeBasic final : public JXType {
 public:
  static bool supportsEncoding(char character);

  /// Reads one character, whatever it is; at the end of the text, none.
  static std::shared_ptr<JXTypeBasic> initWithEncoding(JXTypeCursor& cursor,
                                                       JXTypeQualifiers qualifiers);
  /// `void_`, and a value that is no kind, has the character 0 for its encoding.
  static std::shared_ptr<JXTypeBasic> initWithPrimitiveType(JXPrimitiveType type);

  JXPrimitiveType primitiveType() const;

  JXTypeBasic(Key /*key*/, JXTypeText encoding, JXTypeQualifiers qualifiers)
      : JXType(std::move(encoding), qualifiers, 0) {}

 private:
  void appendOwnHead(std::string& out, bool padding) const override;
  void appendOwnTail(std::string& /*out*/) const override {}
  bool hasSameParts(const JXType& /*other*/) const override { return true; }
};

}  // namespace tavlen
