#pragma once

#include <memory>
#include <string>

#include "cli/arguments/CommandLine.h"
#include "tavlen/bundles/Executable.h"
#include "tavlen/bundles/IPA.h"

namespace tavlen::cli {

inline constexpr const char* kDynamicParser = "dynamic";
inline constexpr const char* kRemoteParser = "remote";

/// What a user says of the image that classes are read from.
struct ImageArgument {
  std::string image;
  std::string parser = kDynamicParser;
};

/// The options that addImageArgument() adds.
struct ImageOptions {
  Option image;
  Option parser;
};

/// Adds `name`, an argument or an option that takes the image, and `--parser`. Parsing stores them
/// in `argument`, which must live as long as the command.
ImageOptions addImageArgument(Command command, const char* name, ImageArgument& argument);

/// An image, and the app that it belongs to, which it does not keep itself; null where it belongs
/// to none.
struct NamedImage {
  std::shared_ptr<IPA> app;
  std::shared_ptr<Executable> executable;
};

/// The image that a user names: by its file, or by the app whose main program it is. For the remote
/// parser, which asks the app, a file must lie in an app's bundle. Throws what appArgument() and
/// IPA::mainExecutable() throw, and std::runtime_error whose text begins with the argument.
NamedImage imageNamed(const ImageArgument& argument);

}  // namespace tavlen::cli
