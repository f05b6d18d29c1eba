#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "tavlen/foundation/base/API.h"
#include "tavlen/introspection/types/JXType.h"

namespace tavlen {

/// An object, with or without a class name and protocols, or a block.
///
/// An empty name is not an absent one: `@""` has an empty name and is printed as ` *`.
class TAVLEN_API JXTypeID final : public JXType {
 public:
  /// The names of protocols.
  using Protocols = std::vector<std::string_view>;

  /// Whether an encoding that begins with `character` is of this class.
  static bool supportsEncoding(char character) { return character == '@'; }

  /// Parses at the cursor and moves past the type. Takes the quoted name after the `@` unless
  /// JXTypeIDIgnoreName is set. A name without a closing quote ends with the text.
  static std::shared_ptr<JXTypeID> initWithEncoding(JXTypeCursor& cursor,
                                                    JXTypeQualifiers qualifiers);
  /// Builds a node. The encoding of a block is `@?`, whatever its name and protocols.
  static std::shared_ptr<JXTypeID> initWithName(
      const std::optional<std::string>& name,
      const std::optional<std::vector<std::string>>& protocols, bool isBlock);

  /// The class name, if any. Valid as long as the node, and so are the protocols.
  std::optional<std::string_view> name() const;
  /// The protocols; null when there is no list.
  const Protocols* protocols() const { return protocols_.get(); }
  /// Whether it is a block.
  bool isBlock() const { return isMarked(); }

  /// `name` is a null view without a class name.
  JXTypeID(Key /*key*/, SharedText encoding, JXTypeQualifiers qualifiers, bool isBlock,
           std::string_view name, std::unique_ptr<const Protocols> protocols);

 private:
  static std::shared_ptr<JXTypeID> withoutName(JXTypeQualifiers qualifiers, bool isBlock);

  void appendOwnHead(std::string& out, bool padding, JXTypeBodies /*bodies*/) const override;
  void appendOwnTail(std::string& out) const override;
  bool hasSameParts(const JXType& other) const override;

  std::string_view name_;
  std::unique_ptr<const Protocols> protocols_;
};

}  // namespace tavlen
