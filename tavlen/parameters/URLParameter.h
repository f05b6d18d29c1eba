#pragma once

#include <string>
#include <string_view>

#include "tavlen/foundation/coding/Coding.h"
#include "tavlen/foundation/coding/TypeKeyedCoding.h"

namespace tavlen {

/// A URL, as its text. The text is not checked here: the run time makes the URL of it.
struct URLParameter {
  static constexpr std::string_view typeName = "URLParameter";
  static constexpr std::string_view identifier = identifierWithBaseName(typeName, "Parameter");

  std::string string;

  void appendOBJSValue(std::string& out) const;
  std::string objsValue() const;

  static constexpr auto codedFields() {
    return std::tuple{requiredField("string", &URLParameter::string)};
  }
  bool operator==(const URLParameter&) const = default;
};

}  // namespace tavlen
