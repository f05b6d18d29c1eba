#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "tavlen/foundation/coding/Coding.h"
#include "tavlen/foundation/coding/TypeKeyedCoding.h"
#include "tavlen/parameters/Parameter.h"

namespace tavlen {

/// A list of pairs, in the user's order; nothing keeps keys apart. Include ParameterContainer.h to
/// use it.
struct DictionaryParameter {
  static constexpr std::string_view typeName = "DictionaryParameter";
  static constexpr std::string_view identifier = identifierWithBaseName(typeName, "Parameter");

  struct Pair;
  using Item = Pair;

  std::vector<Pair> _items;

  static DictionaryParameter withItems(std::vector<Pair> items);
  const std::vector<Pair>& items() const { return _items; }
  void setItems(std::vector<Pair> items);

  /// The keys are rendered before the values, so a failing key is the one reported. A nil on either
  /// side is written as the null object.
  void appendOBJSValue(std::string& out) const;
  std::string objsValue() const;

  static constexpr auto codedFields() {
    return std::tuple{requiredField("items", &DictionaryParameter::_items)};
  }
  bool operator==(const DictionaryParameter&) const = default;
};

}  // namespace tavlen
