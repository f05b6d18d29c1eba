#pragma once

#include <string>

#include "tavlen/introspection/ClassParser.h"

namespace CLI {
class App;
class Option;
}  // namespace CLI

namespace tavlen::cli {

/// What a user says of the image that classes are read from.
struct ImageArgument {
  std::string image;
  std::string parser = "dynamic";
};

/// Adds `name`, an argument or an option that takes the image, and `--parser`. Parsing stores them
/// in `argument`, which must live as long as the command.
CLI::Option* addImageArgument(CLI::App& command, const char* name, ImageArgument& argument);

/// The classes that the image defines. Shows on a terminal how far it is; SIGINT and SIGTERM end
/// it. Throws std::runtime_error whose text begins with the image, and what looking for an app
/// throws.
ClassParser::Classes dumpClasses(const ImageArgument& argument);

/// As dumpClasses(), the class of that name. Throws std::runtime_error where there is none, too.
std::shared_ptr<ObjCClass> dumpedClass(const ImageArgument& argument, const std::string& name);

}  // namespace tavlen::cli
