#pragma once

#include <string_view>

/// Where things lie on the device, as its absolute paths; DeviceRoot says where that is here.
namespace tavlen {

/// Holds everything that the product stores for its user.
inline constexpr std::string_view kApplicationSupportDir =
    "/var/mobile/Library/Application Support/Marrowgleam";
/// The stored tweaks, a folder each, and the collections, a file each.
inline constexpr std::string_view kTweaksDir =
    "/var/mobile/Library/Application Support/Marrowgleam/Tweaks";
/// A folder an app, named by its bundle identifier, with the record of its active tweak.
inline constexpr std::string_view kInstalledTweaksDir =
    "/var/mobile/Library/Application Support/Marrowgleam/Installed Tweaks";
/// For the installation code of the product; the library does not read it.
inline constexpr std::string_view kTweakLibrariesDir = "/usr/lib/Marrowgleam";
/// The name of the record's file.
inline constexpr std::string_view kTweakInfoFilename = "TweakInfo.plist";
/// The program that does what needs privileges.
inline constexpr std::string_view kFileOperationsPath =
    "/Applications/Marrowgleam.app/bin/kvfileops";
inline constexpr std::string_view kCrashReporterDir = "/var/mobile/Library/Logs/CrashReporter";

}  // namespace tavlen
