#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "tavlen/introspection/types/JXType.h"

namespace tavlen {

/// A struct or a union.
///
/// Its text is taken as it is, also where the name of a C++ template ends it early. A built one has
/// no closing delimiter, `{CGPoint=dd`, and is read back as such.
class JXTypeComplex : public JXType {
 public:
  using Types = std::vector<std::shared_ptr<JXType>>;
  using FieldNames = std::vector<std::string_view>;

  static constexpr char kStartDelimiter = '\0';
  static constexpr char kEndDelimiter = '\0';

  /// How C names the kind: `struct`.
  virtual std::string_view typeName() const = 0;

  /// Nothing where the text has no name, or `?`. Valid as long as the node, as are the field names.
  std::optional<std::string_view> name() const;
  /// The members; null where there is no body, which an empty one is not.
  const Types* types() const { return types_.get(); }
  /// Null where the members have no names. There may be fewer than members, where it was built so.
  const FieldNames* fieldNames() const { return fieldNames_.get(); }

 protected:
  /// All that is stored of an aggregate.
  struct Parts {
    JXTypeText encoding;
    JXTypeQualifiers qualifiers = JXTypeQualifiers::none;
    std::string_view name;  ///< without bytes where there is none
    std::unique_ptr<const Types> types;
    std::unique_ptr<const FieldNames> fieldNames;
  };

  explicit JXTypeComplex(Parts parts);

  static Parts read(JXTypeCursor& cursor, JXTypeQualifiers qualifiers, char end);
  static Parts build(char start, const std::optional<std::string>& name, std::optional<Types> types,
                     const std::optional<std::vector<std::string>>& fieldNames);

 private:
  void appendOwnHead(std::string& out, bool padding) const override;
  void appendOwnTail(std::string& /*out*/) const override {}
  bool hasSameParts(const JXType& other) const override;
  void appendBody(std::string& out) const;

  std::string_view name_;
  std::unique_ptr<const Types> types_;
  std::unique_ptr<const FieldNames> fieldNames_;
};

}  // namespace tavlen
