#pragma once

#include <filesystem>
#include <string>

#include "tavlen/device/TweakInfo.h"
#include "tavlen/tweaks/TweakFile.h"

/// What the loader on the device takes: of every installed tweak a folder "<UUID>.bundle" with
/// "code.js", its source map "code.js.map", the app's "Info.plist" with the tweak's overrides,
/// "Resources", and where they are asked for and there, "Executables" and "Icon.png".
namespace tavlen {

/// The work of TweakFile::package(): one such folder. Files keep their permissions, but not the
/// bits that lend their owner's rights.
///
/// Symbolic links are refused with all else that is neither file nor folder (EINVAL): the helper
/// that installs copies none, and one that leads out would carry in what is not the tweak's. What
/// fails leaves nothing in `directory`, and `tweakInfo` as it was.
void packageTweak(const TweakFile& tweak, const std::filesystem::path& directory,
                  const std::filesystem::path& transpiler, TweakInfo& tweakInfo,
                  bool copyExecutables);

/// Throws TweakError::bundleIDMismatch unless an item made for the app `bundleID` is to be
/// installed for that one.
void checkTarget(const TweakInfo& tweakInfo, const std::string& bundleID);

}  // namespace tavlen
