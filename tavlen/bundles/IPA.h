#pragma once

#include <filesystem>
#include <memory>
#include <utility>

namespace tavlen {

/// Handle on one installed app.
class IPA {
 public:
  /// The app in that folder. Reads nothing.
  static std::shared_ptr<IPA> withAppDir(std::filesystem::path appDir) {
    return std::shared_ptr<IPA>(new IPA(std::move(appDir)));
  }

  const std::filesystem::path& appDir() const { return appDir_; }

 private:
  explicit IPA(std::filesystem::path appDir) : appDir_(std::move(appDir)) {}

  std::filesystem::path appDir_;
};

}  // namespace tavlen
