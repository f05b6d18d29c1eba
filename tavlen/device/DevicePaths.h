#pragma once

#include <string_view>

/// Paths on the device, absolute. DeviceRoot::resolve() turns them into host paths.
namespace tavlen {

/// The folder with everything that the product stores for its user.
inline constexpr std::string_view kApplicationSupportDir =
    "/var/mobile/Library/Application Support/Marrowgleam";
/// The stored tweaks, each a folder, and collections, each a file.
inline constexpr std::string_view kTweaksDir =
    "/var/mobile/Library/Application Support/Marrowgleam/Tweaks";
/// A folder for each app, named by its bundle identifier, with the record of its active tweak.
inline constexpr std::string_view kInstalledTweaksDir =
    "/var/mobile/Library/Application Support/Marrowgleam/Installed Tweaks";
/// Used by the product's installation code; the library does not read it.
inline constexpr std::string_view kTweakLibrariesDir = "/usr/lib/Marrowgleam";
/// The file name of that record.
inline constexpr std::string_view kTweakInfoFilename = "TweakInfo.plist";
/// The privileged file-operations helper.
inline constexpr std::string_view kFileOperationsPath =
    "/Applications/Marrowgleam.app/bin/kvfileops";
/// The system's crash logs.
inline constexpr std::string_view kCrashReporterDir = "/var/mobile/Library/Logs/CrashReporter";

}  // namespace tavlen
