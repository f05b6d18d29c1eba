#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <vector>

#include "cli/arguments/CommandLine.h"
#include "cli/terminal/Console.h"
#include "tavlen/introspection/classes/ClassSource.h"

namespace tavlen::cli {

/// The images from which classes are read.
struct ImageArgument {
  /// A file, "-" for one on the standard input, a bundle folder, a bundle identifier or an archive
  /// (.ipa).
  std::string image;
  /// The parser's source; absent for preferredClassSource() of each image.
  std::optional<ClassSource> source;
  std::optional<std::string> name;          ///< of the only image of an app to read
  std::optional<std::string> architecture;  ///< of the slice to read
  /// The limit on the time of a dynamic or remote dump.
  std::optional<std::chrono::milliseconds> timeout;
  /// The app whose bundle folder `image` is, if the user did not name that.
  std::optional<std::string> bundleID = {};

  bool isStream() const { return image == "-"; }
  /// `image` as messages name it.
  std::string shown() const { return bundleID ? *bundleID : shownInput(image); }
};

/// The options that addImageArgument() adds.
struct ImageOptions {
  Option image;                ///< IMAGE|APP
  std::vector<Option> others;  ///< `--parser` and so on
};

/// Adds the argument or option `name` for the images, and `--image`, `--parser`, `--arch` and
/// `--timeout`. Parsing stores them in `argument`, which must live as long as the command.
ImageOptions addImageArgument(Command command, const char* name, ImageArgument& argument);

}  // namespace tavlen::cli
