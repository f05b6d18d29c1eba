#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

#include "tavlen/device/TweakInfo.h"

/// The records of the tweaks that are installed on the device, one an app.
///
/// Threads: any; nobody is kept from writing while somebody reads.
namespace tavlen::InstalledRecords {

/// Posted when the active tweak of an app has changed. The user info holds texts: "bundleID", and
/// "tweakID" when a tweak is active now.
inline constexpr std::string_view kDidChangeNotification = "InstalledTweaksDidChange";

/// The folder of the app's installed tweak and its record, as the device names it. `bundleID` must
/// be one plain component.
std::string directory(const std::string& bundleID);

/// The record for that app; nothing when there is none, or none that can be read, and for an
/// identifier that cannot name a folder.
std::optional<TweakInfo> record(const std::string& bundleID);

}  // namespace tavlen::InstalledRecords
