#pragma once

#include <algorithm>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <tuple>
#include <utility>
#include <vector>

#include "tavlen/foundation/coding/Coding.h"
#include "tavlen/foundation/text/StyledText.h"
#include "tavlen/introspection/classes/MethodIdentity.h"
#include "tavlen/introspection/classes/ObjCMethod.h"

namespace tavlen {

/// An Objective-C class of an image. Shared by reference: lists hold std::shared_ptr, never null.
class ObjCClass {
 public:
  using Methods = std::vector<std::shared_ptr<ObjCMethod>>;

  /// The name of the class in archives.
  static constexpr std::string_view archivedClassName = "ObjCClass";

  ObjCClass() = default;
  ObjCClass(std::string className, Methods ownMethods, std::optional<std::string> mangledName,
            std::optional<std::string> superclassName, std::optional<std::string> pathOfSuperclass,
            std::vector<std::string> adoptedProtocols)
      : name(std::move(className)),
        methods(std::move(ownMethods)),
        mangledSuperclass(std::move(mangledName)),
        supercls(std::move(superclassName)),
        superclassPath(std::move(pathOfSuperclass)),
        protocols(std::move(adoptedProtocols)) {}

  std::string name;
  Methods methods;  ///< the class's own: those of instances first, then those of the class
  std::optional<std::string> mangledSuperclass;
  std::optional<std::string> supercls;        ///< nothing for a root class
  std::optional<std::string> superclassPath;  ///< of the image that defines the superclass
  std::vector<std::string> protocols;         ///< the names of those that the class adopts

  /// Each of the methods with what tells it from others, in the order of `methods`.
  std::vector<std::pair<std::shared_ptr<ObjCMethod>, MethodIdentity>> methodIdentities() const;

  /// The first of the methods of that selector; null where the class has none of its own.
  std::shared_ptr<ObjCMethod> methodNamed(std::string_view selector, bool isClassMethod) const;

  /// "Name : Super <P, Q>", without the parts that the class does not have. The class, and a
  /// superclass from outside of the system's folders, take `customTypeColor`; the protocols and any
  /// other superclass, one of an unknown image among them, `vendoredTypeColor`; the punctuation
  /// takes `foregroundColor`.
  StyledText description(const StyledText::Color& foregroundColor,
                         const StyledText::Color& vendoredTypeColor,
                         const StyledText::Color& customTypeColor,
                         const StyledText::Font& font) const;
  /// The same text, plain.
  std::string description() const;
  /// That text and, each on a line of its own, the methods.
  std::string debugDescription() const;

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

  /// By value, methods included.
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
