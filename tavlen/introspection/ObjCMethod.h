#pragma once

#include <string>
#include <string_view>
#include <tuple>
#include <utility>

#include "tavlen/foundation/Coding.h"

namespace tavlen {

/// A method of an Objective-C class. Shared by reference: lists hold std::shared_ptr, never null.
class ObjCMethod {
 public:
  /// The name of the class in archives.
  static constexpr std::string_view archivedClassName = "ObjCMethod";

  ObjCMethod() = default;
  ObjCMethod(std::string methodSelector, std::string typeEncoding, bool belongsToClass)
      : selector(std::move(methodSelector)),
        encoding(std::move(typeEncoding)),
        isClassMethod(belongsToClass) {}

  std::string selector;  ///< with its colons
  std::string encoding;  ///< of the types, exactly as the run time reports it
  bool isClassMethod = false;

  static constexpr auto codedFields() {
    return std::tuple{
        requiredField("selector", &ObjCMethod::selector),
        requiredField("encoding", &ObjCMethod::encoding),
        requiredField("isClassMethod", &ObjCMethod::isClassMethod),
    };
  }
  bool operator==(const ObjCMethod&) const = default;
};

}  // namespace tavlen
