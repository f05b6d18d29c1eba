#pragma once

#include <filesystem>
#include <memory>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "tavlen/bundles/IPA.h"
#include "tavlen/device/AppListApp.h"
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

/// The app at a path or with a bundle identifier. Throws std::system_error and std::runtime_error,
/// whose message suggests an app for an unknown identifier.
std::shared_ptr<IPA> appArgument(const std::string& text);

/// The bundle identifier of the app at a path, or `text` itself if it is an identifier; no app with
/// that identifier need exist. Throws as appArgument() does for a path.
std::string bundleIDOf(const std::string& text);

/// The app with a bundle identifier. Throws as appArgument() does.
std::shared_ptr<IPA> appWithBundleID(const std::string& bundleID);

/// Whether the shared app list contains an app with that identifier.
bool isInstalledApp(const std::string& bundleID);
/// Warns of an identifier for which isInstalledApp() is false, and suggests an app.
void warnIfNotInstalled(const std::string& bundleID);

/// The apps for which tweaks can be made, in the order of the system's list. Throws as
/// AppListFetcher::fetchAllApps() does.
std::vector<AppListApp> fetchedApps();
/// "; did you mean "com.example.notes"?" with the identifier of the app whose identifier or name
/// `text` probably means; empty if no app is similar.
std::string appSuggestion(const std::string& text);

/// "no app has this identifier", with appSuggestion() or how to find one: for a message about
/// `text`.
std::string unknownAppText(const std::string& text);

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
