#pragma once

#include <filesystem>
#include <string>

#include "tavlen/bundles/Info.h"
#include "tavlen/device/TweakInfo.h"
#include "tavlen/foundation/base/API.h"
#include "tavlen/tweaks/Manifest.h"

/// Makes the input of the loader on the device: for every installed tweak, a folder "<UUID>.bundle"
/// with "code.js", its source map "code.js.map", the app's "Info.plist" with the tweak's overrides,
/// "Resources", "Icon.png" if the tweak has an icon, and "Executables" if the caller asks for them.
namespace tavlen {

/// Options for packaging.
struct TAVLEN_API Packaging {
  std::filesystem::path directory;   ///< an existing folder, in which the packages are created
  std::filesystem::path transpiler;  ///< the folder that contains "ob.js"
  bool copyExecutables = false;      ///< whether to copy the tweaks' executables
};

/// Makes the package of one tweak, for the app whose Info.plist is `target`. Implements
/// TweakFile::package(). Blocks while it converts and copies, and cannot be cancelled. Files keep
/// their permissions, except for set-user-ID and set-group-ID.
///
/// Throws as TweakFile::package() does, and std::runtime_error for entries with a
/// refusalOf(). After an error the directory holds nothing new and `tweakInfo` is unchanged.
TAVLEN_API void packageTweak(const TweakFile::Opened& tweak, const Info& target,
                             const Packaging& packaging, TweakInfo& tweakInfo);

/// Throws TweakError::bundleIDMismatch unless `tweakInfo` names `bundleID`, the target app of the
/// item.
TAVLEN_API void checkTarget(const TweakInfo& tweakInfo, const std::string& bundleID);

}  // namespace tavlen
