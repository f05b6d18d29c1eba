#pragma once

#include <string>
#include <string_view>

#include "tavlen/foundation/coding/Coding.h"
#include "tavlen/foundation/coding/TypeKeyedCoding.h"

namespace tavlen {

/// No object: a nil in place of an argument or a result.
struct NilParameter {
  static constexpr std::string_view typeName = "NilParameter";
  static constexpr std::string_view identifier = identifierWithBaseName(typeName, "Parameter");

  void appendOBJSValue(std::string& out) const;
  std::string objsValue() const;

  static constexpr auto codedFields() { return std::tuple{}; }
  bool operator==(const NilParameter&) const = default;
};

}  // namespace tavlen
