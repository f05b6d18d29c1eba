#pragma once

#include <memory>
#include <string>

#include "cli/arguments/ImageArgument.h"
#include "tavlen/introspection/classes/ClassParser.h"

namespace tavlen::cli {

/// The classes that the image defines. Shows on a terminal how far it is. SIGINT and SIGTERM end
/// it: a remote dump throws, a dynamic one, in which code of the image may run, ends the process
/// with the same message and status. Throws std::runtime_error whose text begins with the image,
/// and what imageNamed() throws.
ClassParser::Classes dumpClasses(const ImageArgument& argument);

/// As dumpClasses(), the class of that name. Throws std::runtime_error where there is none, too.
std::shared_ptr<ObjCClass> dumpedClass(const ImageArgument& argument, const std::string& name);

}  // namespace tavlen::cli
