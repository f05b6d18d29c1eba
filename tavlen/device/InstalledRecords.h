#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

#include "tavlen/device/TweakInfo.h"
#include "tavlen/foundation/base/API.h"

/// The records of the tweaks that are installed on the device, one for each app.
///
/// Threads: any. Readers do not block writers.
namespace tavlen::InstalledRecords {

/// Posted when the active tweak of an app has changed. The user info holds texts: "bundleID", and
/// "tweakID" if a tweak is active now.
inline constexpr std::string_view kDidChangeNotification = "InstalledTweaksDidChange";

/// The folder with the app's installed tweak and its record, as a path on the device. `bundleID`
/// must be a single path component.
TAVLEN_API std::string directory(const std::string& bundleID);

/// The app's record. Returns nothing when it is missing or unreadable, and when `bundleID` cannot
/// be the name of a folder.
TAVLEN_API std::optional<TweakInfo> record(const std::string& bundleID);

}  // namespace tavlen::InstalledRecords
