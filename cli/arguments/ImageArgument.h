#pragma once

#include <chrono>
#include <memory>
#include <optional>
#include <string>

#include "cli/arguments/CommandLine.h"
#include "tavlen/bundles/Executable.h"
#include "tavlen/bundles/IPA.h"

namespace tavlen::cli {

/// The value of `--parser` for DynamicClassParser.
inline constexpr const char* kDynamicParser = "dynamic";
/// The value of `--parser` for RemoteClassParser.
inline constexpr const char* kRemoteParser = "remote";

/// The image from which classes are read.
struct ImageArgument {
  std::string image;                    ///< a file, a bundle folder or a bundle identifier
  std::string parser = kDynamicParser;  ///< kDynamicParser or kRemoteParser
  std::optional<std::chrono::milliseconds> timeout;  ///< the limit on a dump's time, if any
};

/// The options that addImageArgument() adds.
struct ImageOptions {
  Option image;    ///< IMAGE|APP
  Option parser;   ///< `--parser`
  Option timeout;  ///< `--timeout`
};

/// Adds the argument or option `name` for the image, `--parser` and `--timeout`. Parsing stores
/// them in `argument`, which must live as long as the command.
ImageOptions addImageArgument(Command command, const char* name, ImageArgument& argument);

/// An image together with its app, because an Executable does not keep its app alive.
struct NamedImage {
  std::shared_ptr<IPA> app;                ///< null if the image belongs to no app
  std::shared_ptr<Executable> executable;  ///< never null
};

/// The image in a file, or the main executable of an app. The remote parser needs an app to run, so
/// for it a file must lie inside an .app bundle. Throws what appArgument() and
/// IPA::mainExecutable() throw, and std::runtime_error whose message begins with the argument.
NamedImage imageNamed(const ImageArgument& argument);

}  // namespace tavlen::cli
