#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "tavlen/foundation/base/API.h"
#include "tavlen/introspection/types/JXType.h"

namespace tavlen {

/// An array of a fixed length: `[4i]`.
class TAVLEN_API JXTypeArray final : public JXType {
 public:
  /// Whether an encoding that begins with `character` is of this class.
  static bool supportsEncoding(char character) { return character == '['; }

  /// Parses at the cursor and moves past the type, including the character after the element,
  /// whatever it is.
  static std::shared_ptr<JXTypeArray> initWithEncoding(JXTypeCursor& cursor,
                                                       JXTypeQualifiers qualifiers);
  /// Builds a node. Throws std::invalid_argument for null, std::length_error for a `type` with
  /// kMaximumDepth levels.
  static std::shared_ptr<JXTypeArray> initWithCount(std::uint64_t count,
                                                    std::shared_ptr<JXType> type);

  /// The number of elements.
  std::uint64_t count() const { return count_; }
  /// The type of the elements; never null.
  const std::shared_ptr<JXType>& type() const { return type_; }

  /// For the functions above, which need a public constructor for std::make_shared.
  JXTypeArray(Key /*key*/, SharedText encoding, JXTypeQualifiers qualifiers, std::uint64_t count,
              std::shared_ptr<JXType> type);

 private:
  void appendOwnHead(std::string& out, bool padding, JXTypeBodies bodies) const override;
  void appendOwnTail(std::string& out) const override;
  bool hasSameParts(const JXType& other) const override;

  std::uint64_t count_;
  std::shared_ptr<JXType> type_;
};

}  // namespace tavlen
