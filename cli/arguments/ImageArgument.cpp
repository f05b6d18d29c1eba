#include "cli/arguments/ImageArgument.h"

#include <algorithm>
#include <charconv>
#include <exception>
#include <filesystem>
#include <stdexcept>
#include <system_error>

#include "cli/arguments/AppArgument.h"
#include "cli/arguments/UsageError.h"
#include "cli/terminal/ShownText.h"
#include "tavlen/foundation/files/RandomAccessFile.h"
#include "tavlen/foundation/macho/MachOFile.h"

namespace tavlen::cli {

namespace {

namespace fs = std::filesystem;

NamedImage mainImageOf(const std::shared_ptr<IPA>& app) {
  return {app, namingInfo(*app, [&] { return app->mainExecutable(); })};
}

/// A positive number of seconds, in whole milliseconds. Throws UsageError.
std::chrono::milliseconds secondsFrom(const std::string& text) {
  constexpr double kMost = 1e9;  // the clock overflows at nine times that
  double seconds = 0;
  const char* const end = text.data() + text.size();
  const auto [last, error] = std::from_chars(text.data(), end, seconds, std::chars_format::fixed);
  // Written so that NaN fails the comparison.
  if (error != std::errc() || last != end || !(seconds > 0 && seconds <= kMost)) {
    throw UsageError("--timeout", "not a positive number of seconds: " + text);
  }
  return std::chrono::ceil<std::chrono::milliseconds>(std::chrono::duration<double>(seconds));
}

/// The image in `file`, without an app. The path is made absolute, because the loader searches for
/// names without a folder.
NamedImage loneImage(const fs::path& file) {
  const fs::path path = fs::absolute(file);
  return {nullptr, std::make_shared<Executable>(std::weak_ptr<IPA>(), path.parent_path(),
                                                path.filename().string(), false)};
}

/// Whether `file` is a Mach-O image, or an ELF image for trying an app on Linux.
bool isImage(const fs::path& file) {
  const RandomAccessFile opened(file);
  return MachOFile::read(opened) || opened.read(0, 4) ==
                                        "\x7F"
                                        "ELF";
}

/// The image in `file`, and the app whose bundle contains it.
NamedImage imageInBundle(const fs::path& file) {
  if (!isImage(file)) throw std::runtime_error("not an executable image");
  const fs::path given = fs::absolute(file);
  // Device paths contain no "..".
  const bool leadsUp = std::find(given.begin(), given.end(), "..") != given.end();
  const fs::path path = leadsUp ? fs::canonical(given) : given;
  for (fs::path folder = path.parent_path(); folder.has_relative_path();
       folder = folder.parent_path()) {
    if (folder.extension() != ".app") continue;
    NamedImage main = mainImageOf(IPA::openAt(folder));
    std::error_code ignored;
    if (fs::equivalent(path, main.executable->path(), ignored)) return main;
    std::string inside = path.lexically_relative(folder).string();
    return {main.app, std::make_shared<Executable>(main.app, folder, std::move(inside), false)};
  }
  throw std::runtime_error("not inside an .app bundle; --parser remote needs an app to run");
}

}  // namespace

ImageOptions addImageArgument(Command command, const char* name, ImageArgument& argument) {
  const Option image = command
                           .text(name, argument.image,
                                 "The image: a library's file, an app's bundle identifier or its "
                                 "bundle folder")
                           .notEmpty()
                           .typeName("IMAGE|APP");
  const Option parser =
      command
          .text("--parser", argument.parser,
                "dynamic loads the image into a child process; remote relaunches the app and asks "
                "it")
          .oneOf({kDynamicParser, kRemoteParser})
          .showsDefault();
  const Option timeout =
      command
          .text(
              "--timeout",
              [&argument](const std::string& text) { argument.timeout = secondsFrom(text); },
              "The longest time that the dump may take; without limit by default")
          .typeName("SECONDS");
  return {image, parser, timeout};
}

NamedImage imageNamed(const ImageArgument& argument) {
  const fs::path file = argument.image;
  std::error_code ignored;
  const fs::file_type type = fs::status(file, ignored).type();
  if (type == fs::file_type::not_found || type == fs::file_type::directory) {
    return mainImageOf(appArgument(argument.image));
  }
  try {
    return argument.parser == kRemoteParser ? imageInBundle(file) : loneImage(file);
  } catch (const std::system_error&) {
    throw;  // its message names the file
  } catch (const std::exception& error) {
    throw std::runtime_error(argument.image + ": " + errorText(error));
  }
}

}  // namespace tavlen::cli
