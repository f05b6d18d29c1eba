#pragma once

#include <string>
#include <string_view>
#include <tuple>
#include <utility>

#include "tavlen/foundation/base/API.h"
#include "tavlen/foundation/coding/Coding.h"
#include "tavlen/foundation/text/SharedText.h"
#include "tavlen/foundation/text/StyledText.h"
#include "tavlen/introspection/types/JXTypeDescription.h"

namespace tavlen {

/// A method of an Objective-C class. Lists hold it by std::shared_ptr, never null. Threads: as for
/// a plain value.
class TAVLEN_API ObjCMethod {
 public:
  /// The class name in archives.
  static constexpr std::string_view archivedClassName = "ObjCMethod";

  /// An empty record, for decoders.
  ObjCMethod() = default;
  /// A record with these values, in the order of the members.
  ObjCMethod(SharedText methodSelector, SharedText typeEncoding, bool belongsToClass)
      : selector(std::move(methodSelector)),
        encoding(std::move(typeEncoding)),
        isClassMethod(belongsToClass) {}

  SharedText selector;  ///< with its colons
  SharedText encoding;  ///< of the types, exactly as the run time reports it
  /// Whether it is a class method, not an instance method.
  bool isClassMethod = false;

  /// The declaration on one line, without the names of arguments, which the run time does not know:
  /// "-", a no-break space, then " (void)setObject:(id) forKey:(NSString *)". A part of the
  /// selector without an argument is written alone; types of surplus arguments follow at the end,
  /// each after a comma. Without a valid encoding, the selector follows the no-break space
  /// directly. Types have `typeColor`, everything else `foregroundColor`.
  StyledText description(const StyledText::Color& typeColor,
                         const StyledText::Color& foregroundColor, const StyledText::Font& font,
                         JXTypeBodies bodies = JXTypeBodies::all) const;
  /// The same text without styles.
  std::string description(JXTypeBodies bodies = JXTypeBodies::all) const;
  /// The same with a plain blank after the sign instead of the no-break space and another blank,
  /// for texts that are searched and pasted: "- (void)setObject:(id)".
  std::string plainDeclaration(JXTypeBodies bodies = JXTypeBodies::all) const;

  /// The coded fields.
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
