#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "tavlen/foundation/base/API.h"
#include "tavlen/introspection/types/JXType.h"

namespace tavlen {

/// A struct or a union.
///
/// The text is parsed as it is, even if a C++ template name ends it early. The encoding of a built
/// node has no closing delimiter, `{CGPoint=dd`, and parsing accepts that.
class TAVLEN_API JXTypeComplex : public JXType {
 public:
  /// The types of the members; never null.
  using Types = std::vector<std::shared_ptr<JXType>>;
  /// The names of the members.
  using FieldNames = std::vector<std::string_view>;

  /// The delimiters are those of the subclass.
  static constexpr char kStartDelimiter = '\0';
  /// The delimiters are those of the subclass.
  static constexpr char kEndDelimiter = '\0';

  /// The keyword in C: `struct`.
  virtual std::string_view typeName() const = 0;

  /// The type's name; nothing when the text has none or `?`. Valid as long as the node, and so are
  /// the field names.
  std::optional<std::string_view> name() const;
  /// The types of the members; null without a body, not null for an empty one.
  const Types* types() const { return types_.get(); }
  /// The names of the members; null when they have none. A built node may have fewer names than
  /// members.
  const FieldNames* fieldNames() const { return fieldNames_.get(); }

 protected:
  /// The members of an aggregate node.
  struct Parts {
    SharedText encoding;
    JXTypeQualifiers qualifiers = JXTypeQualifiers::none;
    std::string_view name;  ///< null view for no name
    std::unique_ptr<const Types> types;
    std::unique_ptr<const FieldNames> fieldNames;
  };

  explicit JXTypeComplex(Parts parts);

  static Parts read(JXTypeCursor& cursor, JXTypeQualifiers qualifiers, char end);
  static Parts build(char start, const std::optional<std::string>& name, std::optional<Types> types,
                     const std::optional<std::vector<std::string>>& fieldNames);

 private:
  void appendOwnHead(std::string& out, bool padding, JXTypeBodies bodies) const override;
  void appendOwnTail(std::string& /*out*/) const override {}
  bool hasSameParts(const JXType& other) const override;
  void appendBody(std::string& out, JXTypeBodies bodies) const;

  std::string_view name_;
  std::unique_ptr<const Types> types_;
  std::unique_ptr<const FieldNames> fieldNames_;
};

}  // namespace tavlen
