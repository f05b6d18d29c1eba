#pragma once

#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "cli/arguments/ImageArgument.h"
#include "cli/classes/AppForReading.h"
#include "cli/terminal/HiddenFolder.h"
#include "tavlen/bundles/Executable.h"

namespace tavlen::cli {

/// An image that the user has chosen.
struct ChosenImage {
  std::shared_ptr<Executable> executable;  ///< never null
  std::string name;                        ///< the path in the bundle, or the file as given
  ClassSource source;
};

/// The images that an ImageArgument names, with what keeps them readable.
///
/// A file is one image. With the remote parser it must lie inside an .app bundle, as that needs an
/// app to run. An app stands for all of its images, or for that of `--image`; with the remote
/// parser, which ends the app for each image, for its main executable.
class ImageSelection {
 public:
  /// Finds the images. `input` is the image itself where that is the standard input. An app in an
  /// archive is unpacked as one unit of `progress`. Throws std::runtime_error and std::system_error
  /// whose message begins with the argument or names a file, and what AppForReading throws.
  ImageSelection(const ImageArgument& argument, const std::optional<std::string>& input,
                 const std::shared_ptr<Progress>& progress);

  /// The images, the main executable first; never empty.
  const std::vector<ChosenImage>& images() const { return images_; }
  /// A sentence for each file of the app that may be an image but cannot be read.
  std::vector<std::string> faults() const;
  /// Whether they are temporary copies: those of an unpacked archive, or of the standard input.
  bool isCopied() const { return input_ || (files_ != nullptr && files_->isFromArchive()); }

 private:
  void addImagesOfApp(const ImageArgument& argument);
  void addFile(const ImageArgument& argument, const std::filesystem::path& file);

  std::optional<HiddenFolder> input_;     ///< nothing unless the standard input is the image
  std::unique_ptr<AppForReading> files_;  ///< null if a file was named
  std::shared_ptr<IPA> app_;              ///< an Executable does not keep its app alive
  std::vector<ChosenImage> images_;
};

}  // namespace tavlen::cli
