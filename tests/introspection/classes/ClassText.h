#pragma once

#include <string>

#include "tavlen/introspection/classes/ObjCClass.h"

namespace tavlen {

/// A method on a line, with its type encoding.
inline std::string textOf(const ObjCMethod& method) {
  return (method.isClassMethod ? "+ " : "- ") + method.selector + ' ' + method.encoding + '\n';
}

/// All values of a record, on a line each.
inline std::string textOf(const ObjCClass& cls) {
  std::string text = "class " + cls.name + '\n';
  if (cls.mangledSuperclass) text += "mangled " + *cls.mangledSuperclass + '\n';
  if (cls.supercls)
    text += "super " + *cls.supercls + ' ' + cls.superclassPath.value_or("-") + '\n';
  for (const auto& each : cls.protocols) text += "protocol " + each + '\n';
  for (const auto& each : cls.methods) text += textOf(*each);
  return text;
}

}  // namespace tavlen
