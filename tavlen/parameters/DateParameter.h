#pragma once

#include <string>
#include <string_view>

#include "tavlen/foundation/coding/Coding.h"
#include "tavlen/foundation/coding/TypeKeyedCoding.h"

namespace tavlen {

/// A point in time.
struct DateParameter {
  static constexpr std::string_view typeName = "DateParameter";
  static constexpr std::string_view identifier = identifierWithBaseName(typeName, "Parameter");

  Date date;

  void appendOBJSValue(std::string& out) const;
  std::string objsValue() const;

  static constexpr auto codedFields() {
    return std::tuple{requiredField("date", &DateParameter::date)};
  }
  bool operator==(const DateParameter&) const = default;
};

}  // namespace tavlen
