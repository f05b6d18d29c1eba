#pragma once

#include <string>

#include "tavlen/introspection/classes/ObjCClass.h"
#include "tavlen/introspection/headers/detail/TypeDeclarations.h"

namespace tavlen {

/// Appends the declarations of the methods of one class or category to `out`, one a line, instance
/// methods and class methods as they come. A method that cannot be declared becomes a comment, and
/// so does the second of two with the same selector. Adds the names in them to `names`.
void appendMethodDeclarations(std::string& out, const ObjCClass::Methods& methods,
                              TypeDeclarations& types, TypeDeclarations::Names& names);

}  // namespace tavlen
