#pragma once

#include <string>
#include <string_view>

#include "tavlen/foundation/coding/Coding.h"
#include "tavlen/foundation/coding/TypeKeyedCoding.h"

namespace tavlen {

/// The protocol of that name, looked up at run time.
struct ProtocolParameter {
  static constexpr std::string_view typeName = "ProtocolParameter";
  static constexpr std::string_view identifier = identifierWithBaseName(typeName, "Parameter");
  static constexpr std::string_view fetchFunction = "NSProtocolFromString";

  static constexpr std::string_view retEncoding = "@";

  std::string name;

  void appendOBJSValue(std::string& out) const;
  std::string objsValue() const;

  static constexpr auto codedFields() {
    return std::tuple{requiredField("name", &ProtocolParameter::name)};
  }
  bool operator==(const ProtocolParameter&) const = default;
};

}  // namespace tavlen
