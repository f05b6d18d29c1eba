#pragma once

#include <memory>
#include <string>

#include "tavlen/introspection/types/JXType.h"

namespace tavlen {

/// A pointer to a type, or to a function, of which nothing is known. `*` is a pointer to `char`.
class JXTypePointer final : public JXType {
 public:
  static bool supportsEncoding(char character) { return character == '^' || character == '*'; }

  static std::shared_ptr<JXTypePointer> initWithEncoding(JXTypeCursor& cursor,
                                                         JXTypeQualifiers qualifiers);
  /// The encoding has a `?` before that of `type` for a function, and is `*` for a `char`. Throws
  /// std::invalid_argument for null, std::length_error for a `type` of kMaximumDepth levels.
  static std::shared_ptr<JXTypePointer> initWithType(std::shared_ptr<JXType> type, bool isFunction);

  /// What it points to; a basic node `?` where a function was read. Never null.
  const std::shared_ptr<JXType>& type() const { return type_; }
  bool isFunction() const { return isMarked(); }

  JXTypePointer(Key /*key*/, const JXTypeText& encoding, JXTypeQualifiers qualifiers,
                std::shared_ptr<JXType> type, bool isFunction);

 private:
  static unsigned heightOf(const JXTypeText& encoding, const std::shared_ptr<JXType>& type);
  static std::shared_ptr<JXTypePointer> toCharacter(JXTypeQualifiers qualifiers);

  void appendOwnHead(std::string& out, bool padding) const override;
  void appendOwnTail(std::string& out) const override;
  bool hasSameParts(const JXType& other) const override;

  std::shared_ptr<JXType> type_;
};

}  // namespace tavlen
