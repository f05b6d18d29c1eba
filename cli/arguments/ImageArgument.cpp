#include "cli/arguments/ImageArgument.h"

#include <array>
#include <chrono>
#include <utility>

#include "cli/arguments/UsageError.h"
#include "tavlen/foundation/text/NearestDouble.h"

namespace tavlen::cli {

namespace {

constexpr const char* kAutomatic = "auto";
constexpr std::array<std::pair<const char*, ClassSource>, 3> kParsers = {
    {{"static", ClassSource::file},
     {"dynamic", ClassSource::process},
     {"remote", ClassSource::app}}};

/// Returns nothing for kAutomatic.
std::optional<ClassSource> sourceNamed(const std::string& parser) {
  for (const auto& [name, source] : kParsers) {
    if (parser == name) return source;
  }
  return std::nullopt;
}

/// A positive number of seconds, in whole milliseconds. Throws UsageError.
std::chrono::milliseconds secondsFrom(const std::string& text) {
  constexpr double kMost = 1e9;  // the clock overflows at nine times that
  const auto seconds = nearestDouble(text, RealForm::plain);
  // Written so that NaN fails the comparison.
  if (!seconds || !(seconds->value > 0 && seconds->value <= kMost)) {
    throw UsageError("--timeout", "not a positive number of seconds up to 1000000000: " + text);
  }
  return std::chrono::ceil<std::chrono::milliseconds>(
      std::chrono::duration<double>(seconds->value));
}

}  // namespace

ImageOptions addImageArgument(Command command, const char* name, ImageArgument& argument) {
  const Option image = command
                           .text(name, argument.image,
                                 "The images: a file, - for one on the standard input, or all "
                                 "images of an app, which is given by its bundle identifier, its "
                                 "bundle folder or an archive (.ipa)")
                           .notEmpty()
                           .typeName("IMAGE|APP");
  const Option one =
      command
          .text("--image", argument.name,
                "Only this image of the app: its path in the bundle, or its file's name")
          .notEmpty()
          .typeName("NAME");
  const Option parser =
      command
          .text(
              "--parser",
              [&argument](const std::string& text) { argument.source = sourceNamed(text); },
              "static reads Mach-O files; dynamic loads the image into a process of this machine; "
              "remote relaunches the app and asks it; auto is static for every Mach-O file and in "
              "a device tree, otherwise dynamic")
          .oneOf({kAutomatic, "static", "dynamic", "remote"})
          .typeName("auto|static|dynamic|remote");
  const Option architecture = command
                                  .text("--arch", argument.architecture,
                                        "The slice to read, such as arm64e; for the parser static")
                                  .notEmpty()
                                  .typeName("NAME");
  const Option timeout =
      command
          .text(
              "--timeout",
              [&argument](const std::string& text) { argument.timeout = secondsFrom(text); },
              "The longest time that a dynamic or remote dump of an image may take; without limit "
              "by default")
          .typeName("SECONDS");
  return {image, {one, parser, architecture, timeout}};
}

}  // namespace tavlen::cli
