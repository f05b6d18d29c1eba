#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "tavlen/introspection/types/JXType.h"

namespace tavlen {

class JXTypeArray final : public JXType {
 public:
  static bool supportsEncoding(char character) { return character == '['; }

  /// Passes the character behind the element, whatever it is.
  static std::shared_ptr<JXTypeArray> initWithEncoding(JXTypeCursor& cursor,
                                                       JXTypeQualifiers qualifiers);
  /// Throws std::invalid_argument for null, std::length_error for a `type` of kMaximumDepth levels.
  static std::shared_ptr<JXTypeArray> initWithCount(std::uint64_t count,
                                                    std::shared_ptr<JXType> type);

  std::uint64_t count() const { return count_; }
  /// The type of the elements. Never null.
  const std::shared_ptr<JXType>& type() const { return type_; }

  JXTypeArray(Key /*key*/, JXTypeText encoding, JXTypeQualifiers qualifiers, std::uint64_t count,
              std::shared_ptr<JXType> type);

 private:
  void appendOwnHead(std::string& out, bool padding) const override;
  void appendOwnTail(std::string& out) const override;
  bool hasSameParts(const JXType& other) const override;

  std::uint64_t count_;
  std::shared_ptr<JXType> type_;
};

}  // namespace tavlen
