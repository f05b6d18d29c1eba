#pragma once

#include <filesystem>
#include <string>

#include "tavlen/bundles/Info.h"
#include "tavlen/device/TweakInfo.h"

namespace tavlen {

/// What can be made the active tweak of an app.
class InstallableTweak {
 public:
  virtual ~InstallableTweak() = default;

  /// The identifier that the installed record names.
  virtual std::string id() const = 0;

  /// Builds what the loader takes for the app that says `target` of itself: fresh folders in the
  /// existing folder `directory`, to be moved into the installed-tweaks folder of the app
  /// `tweakInfo.bundleID`. Where one of them is the
  /// icon, `tweakInfo` gets the URL that it will have there, as a path of the device.
  virtual void package(const Info& target, const std::filesystem::path& directory,
                       TweakInfo& tweakInfo) const = 0;
};

}  // namespace tavlen
