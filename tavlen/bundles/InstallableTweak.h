#pragma once

#include <filesystem>
#include <string>

#include "tavlen/bundles/Info.h"
#include "tavlen/device/TweakInfo.h"
#include "tavlen/foundation/base/API.h"

namespace tavlen {

/// Something that can be installed as the active tweak of an app.
class TAVLEN_API InstallableTweak {
 public:
  virtual ~InstallableTweak() = default;

  /// The identifier for the installed record.
  virtual std::string id() const = 0;

  /// Builds the files for the loader, for the app with the Info `target`: new folders in the
  /// existing folder `directory`. The caller moves them into the installed-tweaks folder of the app
  /// `tweakInfo.bundleID`. If there is a custom icon, sets its URL in `tweakInfo`: its final path
  /// on the device.
  virtual void package(const Info& target, const std::filesystem::path& directory,
                       TweakInfo& tweakInfo) const = 0;
};

}  // namespace tavlen
