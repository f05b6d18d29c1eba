#pragma once

#include <string>
#include <string_view>
#include <tuple>
#include <utility>

#include "tavlen/foundation/coding/Coding.h"
#include "tavlen/foundation/text/StyledText.h"

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

  /// The method as its declaration, on one line and without names of arguments, which nobody knows:
  /// "-", a no-break space, then " (void)setObject:(id) forKey:(NSString *)". A part of the
  /// selector that has no argument stands alone; the types of arguments that no part takes follow
  /// at the end, each after a comma. Where the encoding has no signature the selector follows the
  /// no-break space at once. Types take `typeColor`, all else `foregroundColor`.
  StyledText description(const StyledText::Color& typeColor,
                         const StyledText::Color& foregroundColor,
                         const StyledText::Font& font) const;
  /// The same text, plain.
  std::string description() const;

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
