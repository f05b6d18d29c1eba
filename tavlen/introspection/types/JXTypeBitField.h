#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "tavlen/foundation/base/API.h"
#include "tavlen/introspection/types/JXType.h"

namespace tavlen {

/// A bit field of an `unsigned int`: `b3`.
class TAVLEN_API JXTypeBitField final : public JXType {
 public:
  /// Whether an encoding that begins with `character` is of this class.
  static bool supportsEncoding(char character) { return character == 'b'; }

  /// Parses at the cursor and moves past the type.
  static std::shared_ptr<JXTypeBitField> initWithEncoding(JXTypeCursor& cursor,
                                                          JXTypeQualifiers qualifiers);
  /// Builds a node.
  static std::shared_ptr<JXTypeBitField> initWithBits(std::uint64_t bits);

  /// The width in bits.
  std::uint64_t bits() const { return bits_; }
  /// Sets the width; the encoding does not change. Not thread-safe.
  void setBits(std::uint64_t bits) { bits_ = bits; }

  /// For the functions above, which need a public constructor for std::make_shared.
  JXTypeBitField(Key /*key*/, SharedText encoding, JXTypeQualifiers qualifiers, std::uint64_t bits)
      : JXType(std::move(encoding), qualifiers, 0), bits_(bits) {}

 private:
  void appendOwnHead(std::string& out, bool padding, JXTypeBodies /*bodies*/) const override;
  void appendOwnTail(std::string& out) const override;
  bool hasSameParts(const JXType& other) const override;

  std::uint64_t bits_;
};

}  // namespace tavlen
