#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "cli/arguments/NamePattern.h"
#include "cli/classes/ClassDump.h"
#include "tavlen/introspection/classes/MethodIdentity.h"

namespace tavlen::cli {

/// Which methods are looked for.
struct MethodQuery {
  std::optional<std::string> className;  ///< of the only class; absent for all that fit `classes`
  NamePattern classes;
  NamePattern selectors;
  /// Whether methods of superclasses are looked for, too, as far as the images define those.
  bool withInherited = false;
};

/// The part of the dump that fits `query`: the classes, and categories of other images' classes,
/// with the methods looked for, each once; without those that have none. An inherited method is
/// among those of the superclass that defines it, unless every class looked for overrides it. The
/// order is the dump's.
ClassDump methodsFound(const ClassDump& dump, const MethodQuery& query);

/// Whether an image defines the class, or has a category of it.
bool hasClass(const ClassDump& dump, const std::string& name);

/// The first method of the class itself with that identity; null without a match.
std::shared_ptr<ObjCMethod> ownMethod(const ClassDump& dump, const MethodIdentity& identity);

/// Why ownMethod() finds nothing: the class or its method is missing; with the most similar name,
/// if one is similar.
std::string missingMethodText(const ClassDump& dump, const MethodIdentity& identity);
/// "defines no class NAME", with the most similar name, if one is similar.
std::string missingClassText(const ClassDump& dump, const std::string& name);

}  // namespace tavlen::cli
