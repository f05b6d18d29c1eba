#pragma once

#include <string>

#include "tavlen/introspection/classes/ObjCClass.h"

namespace tavlen {

/// A method on a line, with its type encoding.
inline std::string textOf(const ObjCMethod& method) {
  return (method.isClassMethod ? "+ " : "- ") + method.selector.str() + ' ' +
         method.encoding.str() + '\n';
}

/// All values of a record, on a line each.
inline std::string textOf(const ObjCClass& cls) {
  std::string text = "class " + cls.name.str() + '\n';
  if (cls.mangledSuperclass) text += "mangled " + cls.mangledSuperclass->str() + '\n';
  if (cls.supercls)
    text += "super " + cls.supercls->str() + ' ' + cls.superclassPath.value_or("-").str() + '\n';
  for (const auto& each : cls.protocols) text += "protocol " + each.str() + '\n';
  for (const auto& each : cls.methods) text += textOf(*each);
  return text;
}

}  // namespace tavlen
