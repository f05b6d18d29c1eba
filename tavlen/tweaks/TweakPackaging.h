#pragma once

#include <filesystem>
#include <string>

#include "tavlen/bundles/Info.h"
#include "tavlen/device/TweakInfo.h"
#include "tavlen/tweaks/Manifest.h"

/// What the loader on the device takes: of every installed tweak a folder "<UUID>.bundle" with
/// "code.js", its source map "code.js.map", the app's "Info.plist" with the tweak's overrides,
/// "Resources", and where they are asked for and there, "Executables" and "Icon.png".
namespace tavlen {

/// Where packages are made, and of what.
struct Packaging {
  std::filesystem::path directory;   ///< an existing folder, in which packages become folders
  std::filesystem::path transpiler;  ///< the folder of "ob.js"
  bool copyExecutables = false;      ///< whether the executables of tweaks go with them
};

/// The work of TweakFile::package(): one such folder, for the app that says `target` of itself.
/// Files keep their permissions, but not the bits that lend their owner's rights.
///
/// Symbolic links are refused with all else that is neither file nor folder (EINVAL): the helper
/// that installs copies none, and one that leads out would carry in what is not the tweak's. What
/// fails leaves nothing in the directory, and `tweakInfo` as it was.
void packageTweak(const TweakFile::Opened& tweak, const Info& target, const Packaging& packaging,
                  TweakInfo& tweakInfo);

/// Throws TweakError::bundleIDMismatch unless an item made for the app `bundleID` is to be
/// installed for that one.
void checkTarget(const TweakInfo& tweakInfo, const std::string& bundleID);

}  // namespace tavlen
