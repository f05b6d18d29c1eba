#include "cli/classes/ImageSelection.h"

#include <algorithm>
#include <exception>
#include <filesystem>
#include <stdexcept>
#include <system_error>
#include <utility>

#include "cli/arguments/AppArgument.h"
#include "cli/arguments/ArchiveFile.h"
#include "cli/terminal/ShownText.h"
#include "tavlen/device/DeviceRoot.h"
#include "tavlen/foundation/errors/LocalizedError.h"
#include "tavlen/foundation/files/FileReplacement.h"
#include "tavlen/foundation/files/RandomAccessFile.h"
#include "tavlen/foundation/macho/MachOFile.h"

namespace tavlen::cli {

namespace {

namespace fs = std::filesystem;
using Executables = std::vector<std::shared_ptr<Executable>>;

/// Whether `file` is a Mach-O image, or an ELF image for trying an app on Linux.
bool isImage(const fs::path& file) {
  const RandomAccessFile opened(file);
  return MachOFile::read(opened) || opened.read(0, 4) ==
                                        "\x7F"
                                        "ELF";
}

/// The image in `file`, and in `app` the app whose bundle contains it.
std::shared_ptr<Executable> imageInBundle(const fs::path& file, std::shared_ptr<IPA>& app) {
  if (!isImage(file)) throw std::runtime_error("not an executable image");
  const fs::path given = fs::absolute(file);
  // Device paths contain no "..".
  const bool leadsUp = std::find(given.begin(), given.end(), "..") != given.end();
  const fs::path path = leadsUp ? fs::canonical(given) : given;
  for (fs::path folder = path.parent_path(); folder.has_relative_path();
       folder = folder.parent_path()) {
    if (folder.extension() != ".app") continue;
    app = IPA::openAt(folder);
    std::shared_ptr<Executable> main = namingInfo(*app, [&] { return app->mainExecutable(); });
    std::error_code ignored;
    if (fs::equivalent(path, main->path(), ignored)) return main;
    return std::make_shared<Executable>(app, folder, path.lexically_relative(folder).string(),
                                        false);
  }
  throw std::runtime_error("not inside an .app bundle; --parser remote needs an app to run");
}

/// All images of the app, the main executable first.
Executables imagesOf(IPA& app) {
  Executables images = {app.mainExecutable()};
  for (const Executables& others : {app.bundleExecutables(), app.dynamicExecutables()}) {
    images.insert(images.end(), others.begin(), others.end());
  }
  return images;
}

/// The image of that path in the bundle, or else of that file name. Throws unless there is one.
std::shared_ptr<Executable> imageNamed(const std::string& name, const Executables& images) {
  Executables found;
  std::string paths;
  for (const auto& image : images) {
    if (image->relativePath() == name) return image;
    if (image->name() == name) found.push_back(image);
    paths += (paths.empty() ? "" : ", ") + image->relativePath();
  }
  if (found.size() == 1) return found.front();
  throw std::runtime_error((found.empty() ? "no image " : "several images are named ") + name +
                           "; the app's images are " + paths);
}

}  // namespace

ImageSelection::ImageSelection(const ImageArgument& argument,
                               const std::optional<std::string>& input,
                               const std::shared_ptr<Progress>& progress) {
  fs::path file = hostPath(argument.image);
  if (input) {
    if (argument.source == ClassSource::app)
      throw std::runtime_error(argument.shown() + ": --parser remote needs an app of the device");
    input_.emplace();
    file = input_->path() / argument.shown();
    replaceFile(file, *input);
    if (!isImage(file)) throw std::runtime_error(argument.shown() + ": not an executable image");
  }
  const fs::file_type type = DeviceRoot::shared().status(file).type();
  const bool isInArchive = !input && isArchive(argument.image);
  if (isInArchive && argument.source == ClassSource::app) {
    throw std::runtime_error(argument.image +
                             ": an app in an archive cannot be run; name an app of the device");
  }
  const bool isFile =
      type != fs::file_type::not_found && type != fs::file_type::directory && !isInArchive;
  if (!isFile) {
    files_ = std::make_unique<AppForReading>(argument.image, AppForReading::Files::images,
                                             std::nullopt, progress);
  }
  try {
    isFile ? addFile(argument, file) : addImagesOfApp(argument);
  } catch (const std::system_error&) {
    throw;  // its message names the file
  } catch (const std::exception& error) {
    const std::vector<std::string> known = faults();
    throw std::runtime_error(argument.shown() + ": " + errorText(error) +
                             (known.empty() ? "" : " (" + known.front() + ")"));
  }
}

std::vector<std::string> ImageSelection::faults() const {
  return files_ ? files_->faults() : std::vector<std::string>();
}

void ImageSelection::addImagesOfApp(const ImageArgument& argument) {
  const bool isRemote = argument.source == ClassSource::app;
  app_ = files_->ipa();
  Executables images = namingInfo(*app_, [&] { return imagesOf(*app_); });
  if (argument.name) {
    images = {imageNamed(*argument.name, images)};
  } else if (isRemote) {
    images.resize(1);
  }
  for (const auto& image : images) {
    images_.push_back({image, image->relativePath(),
                       argument.source ? *argument.source : preferredClassSource(image->path())});
  }
}

void ImageSelection::addFile(const ImageArgument& argument, const fs::path& file) {
  if (argument.name) throw std::runtime_error("a file; --image is for the images of an app");
  std::shared_ptr<Executable> executable;
  if (argument.source == ClassSource::app) {
    executable = imageInBundle(file, app_);
  } else {
    // The loader searches for names without a folder.
    const fs::path path = fs::absolute(file);
    executable = std::make_shared<Executable>(std::weak_ptr<IPA>(), path.parent_path(),
                                              path.filename().string(), false);
  }
  images_.push_back({executable, argument.shown(),
                     argument.source ? *argument.source : preferredClassSource(file)});
}

}  // namespace tavlen::cli
