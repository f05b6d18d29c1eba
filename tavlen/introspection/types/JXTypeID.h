#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "tavlen/introspection/types/JXType.h"

namespace tavlen {

/// An object, maybe of a known class or of known protocols, or a block.
///
/// Empty is not absent: `@""` has an empty name, and prints ` *`.
class JXTypeID final : public JXType {
 public:
  using Protocols = std::vector<std::string_view>;

  static bool supportsEncoding(char character) { return character == '@'; }

  /// Reads the quoted name behind the `@` unless JXTypeIDIgnoreName is set. Without a closing quote
  /// it ends with the text.
  static std::shared_ptr<JXTypeID> initWithEncoding(JXTypeCursor& cursor,
                                                    JXTypeQualifiers qualifiers);
  /// The encoding of a block is `@?`, whatever name and protocols it is given.
  static std::shared_ptr<JXTypeID> initWithName(
      const std::optional<std::string>& name,
      const std::optional<std::vector<std::string>>& protocols, bool isBlock);

  /// Of the class. Valid as long as the node, as are the protocols.
  std::optional<std::string_view> name() const;
  /// Null where there is no list.
  const Protocols* protocols() const { return protocols_.get(); }
  bool isBlock() const { return isMarked(); }

  /// `name` is without bytes where there is none.
  JXTypeID(Key /*key*/, JXTypeText encoding, JXTypeQualifiers qualifiers, bool isBlock,
           std::string_view name, std::unique_ptr<const Protocols> protocols);

 private:
  static std::shared_ptr<JXTypeID> withoutName(JXTypeQualifiers qualifiers, bool isBlock);

  void appendOwnHead(std::string& out, bool padding) const override;
  void appendOwnTail(std::string& out) const override;
  bool hasSameParts(const JXType& other) const override;

  std::string_view name_;
  std::unique_ptr<const Protocols> protocols_;
};

}  // namespace tavlen
