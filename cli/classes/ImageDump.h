#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "cli/classes/ImageSelection.h"
#include "tavlen/introspection/classes/StaticClassParser.h"

namespace tavlen::cli {

/// What was read of an image.
struct ImageDump {
  std::string path;                         ///< ChosenImage::name
  std::optional<std::string> architecture;  ///< of the slice; absent unless its file was read
  ClassParser::Classes classes;
  std::vector<StaticClassParser::Category> categories;  ///< of other images' classes
  std::vector<std::string> diagnostics;  ///< a sentence for each class or method left out
  std::optional<std::string> error;      ///< why nothing was read; absent if it was
};

/// Reads the classes of the image, or only those named `className` where a source can tell them
/// faster. Reports its progress as one unit of `progress`, which can cancel it. Throws
/// std::system_error (ECANCELED) when cancelled, and std::runtime_error that says why nothing can
/// be read and what to do about it, without the image's name.
ImageDump dumpedImage(const ChosenImage& image, const ImageArgument& argument,
                      const std::optional<std::string>& className,
                      const std::shared_ptr<Progress>& progress);

}  // namespace tavlen::cli
