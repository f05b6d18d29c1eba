#pragma once

#include <string>
#include <string_view>

#include "tavlen/foundation/coding/Coding.h"
#include "tavlen/foundation/coding/TypeKeyedCoding.h"

namespace tavlen {

/// The selector of that name, looked up at run time.
struct SelectorParameter {
  static constexpr std::string_view typeName = "SelectorParameter";
  static constexpr std::string_view identifier = identifierWithBaseName(typeName, "Parameter");
  static constexpr std::string_view fetchFunction = "NSSelectorFromString";

  static constexpr std::string_view retEncoding = ":";

  std::string name;

  void appendOBJSValue(std::string& out) const;
  std::string objsValue() const;

  static constexpr auto codedFields() {
    return std::tuple{requiredField("name", &SelectorParameter::name)};
  }
  bool operator==(const SelectorParameter&) const = default;
};

}  // namespace tavlen
