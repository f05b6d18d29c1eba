#pragma once

#include <filesystem>

namespace tavlen::cli {

/// A new folder among the temporary files (RAII), which errorText() and shownPath() leave out of
/// paths: users know what is in it by another name.
class HiddenFolder {
 public:
  /// Throws std::system_error.
  HiddenFolder();
  HiddenFolder(const HiddenFolder&) = delete;
  HiddenFolder& operator=(const HiddenFolder&) = delete;
  /// Removes the folder with its contents.
  ~HiddenFolder();

  const std::filesystem::path& path() const { return path_; }

 private:
  std::filesystem::path path_;
};

}  // namespace tavlen::cli
