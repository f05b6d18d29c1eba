#pragma once

#include <string>
#include <string_view>

#include "tavlen/foundation/coding/Coding.h"
#include "tavlen/foundation/coding/TypeKeyedCoding.h"

namespace tavlen {

/// A sort of object that is made of a file.
struct FileObject {
  std::string_view typeName;
  /// The class whose object is made of the file.
  std::string_view objectClass;
};

/// The file of that name in the tweak's resources, read at run time as an object of one class.
template <const FileObject& kObject>
struct FileParameter {
  static constexpr std::string_view typeName = kObject.typeName;
  static constexpr std::string_view identifier = identifierWithBaseName(typeName, "Parameter");
  static constexpr std::string_view objectClass = kObject.objectClass;

  std::string filename;

  static constexpr auto codedFields() {
    return std::tuple{requiredField("filename", &FileParameter::filename)};
  }
  bool operator==(const FileParameter&) const = default;
};

inline constexpr FileObject kDataObject = {"DataParameter", "NSData"};
inline constexpr FileObject kImageObject = {"ImageParameter", "UIImage"};

using DataParameter = FileParameter<kDataObject>;
using ImageParameter = FileParameter<kImageObject>;

}  // namespace tavlen
