#pragma once

#include <algorithm>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <tuple>
#include <utility>
#include <vector>

#include "tavlen/foundation/Coding.h"
#include "tavlen/introspection/ObjCMethod.h"

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
