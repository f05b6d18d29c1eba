#pragma once

#include <filesystem>
#include <memory>
#include <stdexcept>
#include <string>
#include <utility>

#include "tavlen/bundles/IPA.h"
#include "tavlen/foundation/coding/CodingError.h"

namespace tavlen::cli {

/// The help text of the argument APP.
inline constexpr const char* kAppHelp =
    "The app: its bundle identifier, or the path of its bundle folder";

/// Whether `text` is a path rather than a bundle identifier: it contains a slash, or names a bundle
/// in the current folder.
bool isPath(const std::string& text);

/// The path on this machine of the file or folder at the path `text`. `apps` and the system's logs
/// print device paths; those are resolved in the device tree. Throws as DeviceRoot::resolve().
std::filesystem::path hostPath(const std::string& text);

/// The app at a path or with a bundle identifier. Throws IPA::Error and, with the path in the
/// message, std::runtime_error.
std::shared_ptr<IPA> appArgument(const std::string& text);

/// The bundle identifier of the app at a path, or `text` itself if it is an identifier; no app with
/// that identifier need exist. Throws as appArgument() does for a path.
std::string bundleIDOf(const std::string& text);

/// Whether the shared app list contains an app with that identifier.
bool isInstalledApp(const std::string& bundleID);

/// `error` as an error that begins with the path of the app's Info.plist.
std::runtime_error withInfoPath(const IPA& ipa, const DecodingError& error);

/// Returns `body()`, which reads the app's Info.plist. A DecodingError becomes withInfoPath().
template <class Body>
decltype(auto) namingInfo(const IPA& ipa, Body&& body) {
  try {
    return std::forward<Body>(body)();
  } catch (const DecodingError& error) {
    throw withInfoPath(ipa, error);
  }
}

/// The app's Info.plist, decoded. Throws InfoManager's errors; a DecodingError becomes
/// withInfoPath().
Info readInfo(const IPA& ipa);

}  // namespace tavlen::cli
