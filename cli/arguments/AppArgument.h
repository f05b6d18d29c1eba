#pragma once

#include <memory>
#include <stdexcept>
#include <string>
#include <utility>

#include "tavlen/bundles/IPA.h"
#include "tavlen/foundation/coding/CodingError.h"

namespace tavlen::cli {

/// What commands say of their argument APP.
inline constexpr const char* kAppHelp =
    "The app: its bundle identifier, or the path of its bundle folder";

/// Whether a user names an app by a path: `text` holds a slash or is the name of a bundle here.
bool isPath(const std::string& text);

/// The app that a user names, by a path or by its bundle identifier. Errors name the path.
std::shared_ptr<IPA> appArgument(const std::string& text);

/// The bundle identifier that a user gives, or that of the app at a path. An identifier is taken as
/// it stands: what it names need not be in any list. Errors name the path.
std::string bundleIDOf(const std::string& text);

/// Whether the shared app list holds an app of that identifier.
bool isInstalledApp(const std::string& bundleID);

/// What an app's Info.plist lacks, with the file's path.
std::runtime_error withInfoPath(const IPA& ipa, const DecodingError& error);

/// Runs `body`, which reads the app's Info; its decoding error then names the file.
template <class Body>
decltype(auto) namingInfo(const IPA& ipa, Body&& body) {
  try {
    return std::forward<Body>(body)();
  } catch (const DecodingError& error) {
    throw withInfoPath(ipa, error);
  }
}

/// The app's Info. A decoding error names the file.
Info readInfo(const IPA& ipa);

}  // namespace tavlen::cli
