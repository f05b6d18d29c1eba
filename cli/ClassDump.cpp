#include "cli/ClassDump.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <atomic>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <stdexcept>
#include <system_error>
#include <thread>

#include "cli/AppArgument.h"
#include "cli/ArgumentChecks.h"
#include "cli/ProgressLine.h"
#include "tavlen/bundles/Executable.h"
#include "tavlen/foundation/MachOHeader.h"
#include "tavlen/foundation/RandomAccessFile.h"
#include "tavlen/introspection/DynamicClassParser.h"
#include "tavlen/introspection/RemoteClassParser.h"
#include "tavlen/introspection/TessaloopInterface.h"

namespace tavlen::cli {

namespace {

namespace fs = std::filesystem;

constexpr const char* kDynamic = "dynamic";
constexpr const char* kRemote = "remote";

/// An image, and the app that it belongs to, which it does not keep itself.
struct Image {
  std::shared_ptr<IPA> app;
  std::shared_ptr<Executable> executable;
};

Image mainImageOf(const std::shared_ptr<IPA>& app) {
  return {app, namingInfo(*app, [&] { return app->mainExecutable(); })};
}

/// The image in `file`, and the app whose bundle it lies in, if it does.
Image imageIn(const fs::path& file) {
  const fs::path path = fs::absolute(file).lexically_normal();
  for (fs::path folder = path.parent_path(); folder.has_relative_path();
       folder = folder.parent_path()) {
    if (folder.extension() != ".app") continue;
    const Image main = mainImageOf(IPA::openAt(folder));
    std::error_code ignored;
    if (fs::equivalent(path, main.executable->path(), ignored)) return main;
    return {main.app, std::make_shared<Executable>(
                          main.app, folder, path.lexically_relative(folder).string(), false)};
  }
  return {nullptr, std::make_shared<Executable>(std::weak_ptr<IPA>(), path.parent_path(),
                                                path.filename().string(), false)};
}

Image imageNamed(const ImageArgument& argument) {
  std::error_code ignored;
  if (!fs::is_regular_file(argument.image, ignored)) {
    return mainImageOf(appArgument(argument.image));
  }
  Image image = imageIn(argument.image);
  if (image.app == nullptr && argument.parser == kRemote) {
    throw std::runtime_error(argument.image +
                             ": is in no app's bundle; the remote parser asks a running app");
  }
  return image;
}

/// Why an image cannot be loaded here, where that is plain.
std::string hintFor(const fs::path& file) {
  try {
    if (MachOHeader::read(RandomAccessFile(file))) {
      return " (it is an image of the device, which does not load into this process; --parser "
             "remote asks the running app)";
    }
  } catch (const std::system_error& error) {
    return ": " + error.code().message();
  }
  return " (--verbose shows what the loader said)";
}

/// Nothing is left behind by an image that is being loaded, and nothing could stop its code.
void endProcess() { std::_Exit(128 + SIGINT); }

ClassParser::Classes dumpDynamically(const Image& image, const ImageArgument& argument,
                                     const std::shared_ptr<Progress>& progress) {
  progress->setCancellationHandler(endProcess);
  try {
    return DynamicClassParser::sharedParser().parse(*image.executable, progress);
  } catch (const DynamicClassParser::Error& error) {
    throw std::runtime_error(argument.image + ": " + error.description() +
                             hintFor(image.executable->path()));
  }
}

/// Ends the requests of this process from the cancellation on, also one that is only about to be
/// made.
class RemoteCancellation {
 public:
  explicit RemoteCancellation(Progress& progress) {
    progress.setCancellationHandler([isOver = isOver_] {
      constexpr std::chrono::milliseconds kInterval(50);
      while (!*isOver) {
        cancelTessaloopIfNeeded();
        std::this_thread::sleep_for(kInterval);
      }
    });
  }
  RemoteCancellation(const RemoteCancellation&) = delete;
  RemoteCancellation& operator=(const RemoteCancellation&) = delete;
  ~RemoteCancellation() { *isOver_ = true; }

 private:
  std::shared_ptr<std::atomic<bool>> isOver_ = std::make_shared<std::atomic<bool>>(false);
};

ClassParser::Classes dumpRemotely(const Image& image, const ImageArgument& argument,
                                  const std::shared_ptr<Progress>& progress) {
  const RemoteCancellation cancellation(*progress);
  try {
    return RemoteClassParser().parse(*image.executable, progress);
  } catch (const RemoteClassParser::Error& error) {
    if (progress->isCancelled()) {
      throw std::system_error(std::make_error_code(std::errc::operation_canceled), argument.image);
    }
    throw std::runtime_error(argument.image + ": " + error.description());
  }
}

}  // namespace

CLI::Option* addImageArgument(CLI::App& command, const char* name, ImageArgument& argument) {
  CLI::Option* image =
      command
          .add_option(
              name, argument.image,
              "The image: a library's file, an app's bundle identifier or its bundle folder")
          ->check(notEmpty())
          ->type_name("IMAGE|APP");
  command
      .add_option("--parser", argument.parser,
                  "dynamic loads the image into this process, remote asks the app, relaunched")
      ->check(CLI::IsMember({kDynamic, kRemote}))
      ->capture_default_str();
  return image;
}

ClassParser::Classes dumpClasses(const ImageArgument& argument) {
  const Image image = imageNamed(argument);
  const ProgressLine line("reading classes of " + argument.image);
  line.progress()->setTotalUnitCount(1);
  const bool isRemote = argument.parser == kRemote;
  return (isRemote ? dumpRemotely : dumpDynamically)(image, argument, line.progress());
}

std::shared_ptr<ObjCClass> dumpedClass(const ImageArgument& argument, const std::string& name) {
  const ClassParser::Classes classes = dumpClasses(argument);
  const auto found = std::find_if(classes.begin(), classes.end(),
                                  [&](const auto& cls) { return cls->name == name; });
  if (found == classes.end()) {
    throw std::runtime_error(argument.image + ": defines no class " + name);
  }
  return *found;
}

}  // namespace tavlen::cli
