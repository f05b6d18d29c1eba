#pragma once

#include <string>
#include <string_view>

#include "tavlen/foundation/coding/Coding.h"
#include "tavlen/foundation/coding/TypeKeyedCoding.h"

namespace tavlen {

/// The file of that name in the tweak's resources, read at run time as an image.
struct ImageParameter {
  static constexpr std::string_view typeName = "ImageParameter";
  static constexpr std::string_view identifier = identifierWithBaseName(typeName, "Parameter");
  /// The class whose object is made of the file.
  static constexpr std::string_view objectClass = "UIImage";

  std::string filename;

  void appendOBJSValue(std::string& out) const;
  std::string objsValue() const;

  static constexpr auto codedFields() {
    return std::tuple{requiredField("filename", &ImageParameter::filename)};
  }
  bool operator==(const ImageParameter&) const = default;
};

}  // namespace tavlen
