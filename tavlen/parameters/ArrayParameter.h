#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "tavlen/foundation/coding/Coding.h"
#include "tavlen/foundation/coding/TypeKeyedCoding.h"
#include "tavlen/parameters/Parameter.h"

namespace tavlen {

/// A list of parameters. Include ParameterContainer.h to use it.
struct ArrayParameter {
  static constexpr std::string_view typeName = "ArrayParameter";
  static constexpr std::string_view identifier = identifierWithBaseName(typeName, "Parameter");

  using Item = Parameter;

  std::vector<ParameterContainer> _items;

  static ArrayParameter withItems(std::vector<Parameter> items);
  std::vector<Parameter> items() const;
  void setItems(std::vector<Parameter> items);

  /// A nil among the items is written as the null object, since a collection holds objects only.
  /// The first item that fails makes the whole fail.
  void appendOBJSValue(std::string& out) const;
  std::string objsValue() const;

  static constexpr auto codedFields() {
    return std::tuple{requiredField("items", &ArrayParameter::_items)};
  }
  bool operator==(const ArrayParameter&) const = default;
};

}  // namespace tavlen
