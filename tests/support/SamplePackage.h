#pragma once

#include <stdexcept>

#include "tavlen/bundles/InstallableTweak.h"
#include "tavlen/device/DevicePaths.h"
#include "tavlen/foundation/files/FileReplacement.h"

namespace tavlen {

/// A tweak whose package is one folder, with an icon where it has one, and made without the
/// transpiler, which would take most of a test's time. The one of the identifier "broken" fails.
class SamplePackage : public InstallableTweak {
 public:
  explicit SamplePackage(std::string id, std::string icon = "")
      : id_(std::move(id)), icon_(std::move(icon)) {}

  std::string id() const override { return id_; }
  void package(const Info& /*target*/, const std::filesystem::path& directory,
               TweakInfo& tweakInfo) const override {
    if (id_ == "broken") throw std::runtime_error("does not build");
    const std::string name = id_ + ".bundle";
    std::filesystem::create_directory(directory / name);
    replaceFile(directory / name / "code.js", "code of " + id_);
    if (icon_.empty()) return;
    replaceFile(directory / name / "Icon.png", icon_);
    tweakInfo.customIconURL = URL::fileURL(std::string(kInstalledTweaksDir) + "/" +
                                           *tweakInfo.bundleID + "/" + name + "/Icon.png");
  }

 private:
  std::string id_;
  std::string icon_;
};

}  // namespace tavlen
