#pragma once

#include <string>
#include <string_view>

#include "tavlen/foundation/coding/Coding.h"
#include "tavlen/foundation/coding/TypeKeyedCoding.h"

namespace tavlen {

/// Source text of the hook language, put in place as it stands.
struct CodeParameter {
  static constexpr std::string_view typeName = "CodeParameter";
  static constexpr std::string_view identifier = identifierWithBaseName(typeName, "Parameter");

  std::string code;

  void appendOBJSValue(std::string& out) const;
  std::string objsValue() const;

  static constexpr auto codedFields() {
    return std::tuple{requiredField("code", &CodeParameter::code)};
  }
  bool operator==(const CodeParameter&) const = default;
};

}  // namespace tavlen
