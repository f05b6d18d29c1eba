#pragma once

#include <algorithm>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <tuple>
#include <utility>
#include <vector>

#include "tavlen/foundation/base/API.h"
#include "tavlen/foundation/coding/Coding.h"
#include "tavlen/foundation/text/SharedText.h"
#include "tavlen/foundation/text/StyledText.h"
#include "tavlen/introspection/classes/MethodIdentity.h"
#include "tavlen/introspection/classes/ObjCMethod.h"

namespace tavlen {

/// An Objective-C class of an image. Lists hold it by std::shared_ptr, never null. Threads: as for
/// a plain value.
class TAVLEN_API ObjCClass {
 public:
  /// Methods; never null.
  using Methods = std::vector<std::shared_ptr<ObjCMethod>>;

  /// The class name in archives.
  static constexpr std::string_view archivedClassName = "ObjCClass";

  /// An empty record, for decoders.
  ObjCClass() = default;
  /// A record with these values, in the order of the members.
  ObjCClass(SharedText className, Methods ownMethods, std::optional<SharedText> mangledName,
            std::optional<SharedText> superclassName, std::optional<SharedText> pathOfSuperclass,
            std::vector<SharedText> adoptedProtocols)
      : name(std::move(className)),
        methods(std::move(ownMethods)),
        mangledSuperclass(std::move(mangledName)),
        supercls(std::move(superclassName)),
        superclassPath(std::move(pathOfSuperclass)),
        protocols(std::move(adoptedProtocols)) {}

  /// The class's name.
  SharedText name;
  Methods methods;  ///< of the class itself: instance methods first, then class methods
  /// The superclass's mangled name, where the parser knows one.
  std::optional<SharedText> mangledSuperclass;
  std::optional<SharedText> supercls;        ///< absent for a root class
  std::optional<SharedText> superclassPath;  ///< the image that defines the superclass
  std::vector<SharedText> protocols;         ///< names of the adopted protocols

  /// The methods with their identities, in the order of `methods`.
  std::vector<std::pair<std::shared_ptr<ObjCMethod>, MethodIdentity>> methodIdentities() const;

  /// The class's own method with that selector, the first of several; null without a match.
  std::shared_ptr<ObjCMethod> methodNamed(std::string_view selector, bool isClassMethod) const;

  /// "Name : Super <P, Q>", without the parts that the class lacks. The class, and a superclass
  /// from outside of the system's folders, have `customTypeColor`. Protocols and other
  /// superclasses, including those of an unknown image, have `vendoredTypeColor`; punctuation has
  /// `foregroundColor`.
  StyledText description(const StyledText::Color& foregroundColor,
                         const StyledText::Color& vendoredTypeColor,
                         const StyledText::Color& customTypeColor,
                         const StyledText::Font& font) const;
  /// The same text without styles.
  std::string description() const;
  /// The same text, followed by the methods, each on a line.
  std::string debugDescription() const;

  /// The coded fields.
  static constexpr auto codedFields() {
    return std::tuple{
        requiredField("name", &ObjCClass::name),
        requiredField("methods", &ObjCClass::methods),
        optionalField("mangledSuperclass", &ObjCClass::mangledSuperclass),
        optionalField("supercls", &ObjCClass::supercls),
        optionalField("superclassPath", &ObjCClass::superclassPath),
        requiredField("protocols", &ObjCClass::protocols),
    };
  }

  /// Equality by value, including the methods.
  bool operator==(const ObjCClass& other) const {
    const auto isSame = [](const std::shared_ptr<ObjCMethod>& a,
                           const std::shared_ptr<ObjCMethod>& b) { return a == b || *a == *b; };
    return name == other.name && mangledSuperclass == other.mangledSuperclass &&
           supercls == other.supercls && superclassPath == other.superclassPath &&
           protocols == other.protocols &&
           std::equal(methods.begin(), methods.end(), other.methods.begin(), other.methods.end(),
                      isSame);
  }
};

}  // namespace tavlen
