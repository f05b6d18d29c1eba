#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "cli/arguments/ImageArgument.h"
#include "cli/classes/ImageDump.h"

namespace tavlen::cli {

/// What was read of the images that the user named.
struct ClassDump {
  /// The images in their order, with those of which nothing could be read.
  std::vector<ImageDump> images;
  /// A sentence for each file of the app that may be an image but cannot be read.
  std::vector<std::string> faults;
};

/// Reads the classes of the images; with `className`, perhaps only those of that name. An app's
/// code never harms this process. Shows progress on a terminal. SIGHUP, SIGINT, SIGTERM and the
/// argument's time limit cancel it. Throws std::runtime_error whose message begins with the
/// argument if nothing can be read of any image, and what ImageSelection throws.
ClassDump dumpClasses(const ImageArgument& argument,
                      const std::optional<std::string>& className = std::nullopt);

/// Warns of everything that the dump lacks. Returns whether it lacks anything.
bool reportFaults(const ClassDump& dump, const ImageArgument& argument);

}  // namespace tavlen::cli
