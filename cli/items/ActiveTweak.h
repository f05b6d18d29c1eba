#pragma once

#include <map>
#include <optional>
#include <string>

namespace tavlen {
class IPA;
class InstallableTweak;
}  // namespace tavlen

namespace tavlen::cli {

/// The item that the record of the app `bundleID` names; nothing where there is no record.
std::optional<std::string> activeTweakID(const std::string& bundleID);
/// Whether the item `id` is the active one of the app `bundleID`, according to the app's record.
bool isActiveTweak(const std::string& bundleID, const std::string& id);

/// The active item of each app that has one, by the app's bundle identifier. Reads all records.
std::map<std::string, std::string> activeTweakIDs();

/// The app whose record names the item `id`; nothing if no record does. For an item whose own app
/// is unknown: reads all records.
std::optional<std::string> appWithActiveTweak(const std::string& id);

/// Prints, for a root other than "/", that no app is ended and the home screen not restarted.
void tellThatNothingRuns();

/// As IPA::setActiveTweak(), but the message of a helper's error names the helper.
void setActiveTweak(IPA& ipa, const InstallableTweak* tweak);

}  // namespace tavlen::cli
