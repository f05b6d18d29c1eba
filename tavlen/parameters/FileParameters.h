#pragma once

#include <string>
#include <string_view>

#include "tavlen/foundation/base/API.h"
#include "tavlen/foundation/coding/Coding.h"
#include "tavlen/foundation/coding/TypeKeyedCoding.h"

namespace tavlen {

/// A kind of object that is created from a file.
struct TAVLEN_API FileObject {
  /// The parameter kind's type name.
  std::string_view typeName;
  /// The Objective-C class that is initialised with the file.
  std::string_view objectClass;
};

/// A file in the tweak's resources, which is loaded at run time as an object of one class.
template <const FileObject& kObject>
struct FileParameter {
  static constexpr std::string_view typeName = kObject.typeName;
  static constexpr std::string_view identifier = identifierWithBaseName(typeName, "Parameter");
  /// As FileObject::objectClass.
  static constexpr std::string_view objectClass = kObject.objectClass;

  /// The file's name, relative to the tweak's resources.
  std::string filename;

  static constexpr auto codedFields() {
    return std::tuple{requiredField("filename", &FileParameter::filename)};
  }
  bool operator==(const FileParameter&) const = default;
};

/// The bytes of a file.
inline constexpr FileObject kDataObject = {"DataParameter", "NSData"};
/// The image in a file.
inline constexpr FileObject kImageObject = {"ImageParameter", "UIImage"};

/// An NSData with the bytes of a resource.
using DataParameter = FileParameter<kDataObject>;
/// A UIImage from a resource.
using ImageParameter = FileParameter<kImageObject>;

}  // namespace tavlen
