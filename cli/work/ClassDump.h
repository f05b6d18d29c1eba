#pragma once

#include <memory>
#include <string>

#include "cli/arguments/ImageArgument.h"
#include "tavlen/introspection/classes/ClassParser.h"

namespace tavlen::cli {

/// The classes that the image defines. A dynamic dump loads the image into a child process, so the
/// image's code cannot harm this one. Shows progress on a terminal. SIGINT, SIGTERM and the
/// argument's time limit cancel a dump. Throws std::runtime_error whose message begins with the
/// image, and what imageNamed() throws.
ClassParser::Classes dumpClasses(const ImageArgument& argument);

/// The class with that name. Never null. Behaves as dumpClasses(), and throws std::runtime_error if
/// the image does not define the class.
std::shared_ptr<ObjCClass> dumpedClass(const ImageArgument& argument, const std::string& name);

}  // namespace tavlen::cli
