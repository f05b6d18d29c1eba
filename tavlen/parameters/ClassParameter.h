#pragma once

#include <string>
#include <string_view>

#include "tavlen/foundation/coding/Coding.h"
#include "tavlen/foundation/coding/TypeKeyedCoding.h"

namespace tavlen {

/// The class of that name, looked up at run time.
struct ClassParameter {
  static constexpr std::string_view typeName = "ClassParameter";
  static constexpr std::string_view identifier = identifierWithBaseName(typeName, "Parameter");
  static constexpr std::string_view fetchFunction = "NSClassFromString";
  // An object's encoding, not a class's: stored hooks were built with it, and the run time passes
  // both alike.
  static constexpr std::string_view retEncoding = "@";

  std::string name;

  void appendOBJSValue(std::string& out) const;
  std::string objsValue() const;

  static constexpr auto codedFields() {
    return std::tuple{requiredField("name", &ClassParameter::name)};
  }
  bool operator==(const ClassParameter&) const = default;
};

}  // namespace tavlen
