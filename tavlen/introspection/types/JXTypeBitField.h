#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "tavlen/introspection/types/JXType.h"

namespace tavlen {

/// A bit field of an `unsigned int`.
class JXTypeBitField final : public JXType {
 public:
  static bool supportsEncoding(char character) { return character == 'b'; }

  static std::shared_ptr<JXTypeBitField> initWithEncoding(JXTypeCursor& cursor,
                                                          JXTypeQualifiers qualifiers);
  static std::shared_ptr<JXTypeBitField> initWithBits(std::uint64_t bits);

  std::uint64_t bits() const { return bits_; }
  /// The encoding stays as it is.
  void setBits(std::uint64_t bits) { bits_ = bits; }

  JXTypeBitField(Key /*key*/, JXTypeText encoding, JXTypeQualifiers qualifiers, std::uint64_t bits)
      : JXType(std::move(encoding), qualifiers, 0), bits_(bits) {}

 private:
  void appendOwnHead(std::string& out, bool padding) const override;
  void appendOwnTail(std::string& out) const override;
  bool hasSameParts(const JXType& other) const override;

  std::uint64_t bits_;
};

}  // namespace tavlen
