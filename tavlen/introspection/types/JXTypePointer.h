#pragma once

#include <memory>
#include <string>

#include "tavlen/foundation/base/API.h"
#include "tavlen/introspection/types/JXType.h"

namespace tavlen {

/// A pointer to a type, or to a function of unknown type. `*` is a pointer to `char`.
class TAVLEN_API JXTypePointer final : public JXType {
 public:
  /// Whether an encoding that begins with `character` is of this class.
  static bool supportsEncoding(char character) { return character == '^' || character == '*'; }

  /// Parses at the cursor and moves past the type.
  static std::shared_ptr<JXTypePointer> initWithEncoding(JXTypeCursor& cursor,
                                                         JXTypeQualifiers qualifiers);
  /// Builds a node. The encoding has a `?` before that of `type` for a function, and is `*` for a
  /// `char`. Throws std::invalid_argument for null, std::length_error for a `type` with
  /// kMaximumDepth levels.
  static std::shared_ptr<JXTypePointer> initWithType(std::shared_ptr<JXType> type, bool isFunction);

  /// The pointee; a basic node `?` for a parsed function pointer. Never null.
  const std::shared_ptr<JXType>& type() const { return type_; }
  /// Whether it points to a function.
  bool isFunction() const { return isMarked(); }

  /// For the functions above, which need a public constructor for std::make_shared.
  JXTypePointer(Key /*key*/, const SharedText& encoding, JXTypeQualifiers qualifiers,
                std::shared_ptr<JXType> type, bool isFunction);

 private:
  static unsigned heightOf(const SharedText& encoding, const std::shared_ptr<JXType>& type);
  static std::shared_ptr<JXTypePointer> toCharacter(JXTypeQualifiers qualifiers);

  void appendOwnHead(std::string& out, bool padding, JXTypeBodies bodies) const override;
  void appendOwnTail(std::string& out) const override;
  bool hasSameParts(const JXType& other) const override;

  std::shared_ptr<JXType> type_;
};

}  // namespace tavlen
