#pragma once

#include <optional>
#include <string>

namespace tavlen {
class IPA;
class InstallableTweak;
}  // namespace tavlen

namespace tavlen::cli {

/// The item that the record of the app `bundleID` names; nothing where there is no record.
std::optional<std::string> activeTweakID(const std::string& bundleID);
/// Whether the record of the app `bundleID` names the item `id`.
bool isActiveTweak(const std::string& bundleID, const std::string& id);

/// Prints, for a root other than "/", that no app is ended and the home screen not restarted.
void tellThatNothingRuns();

/// IPA::setActiveTweak() with errors for users: the helper's name it.
void setActiveTweak(IPA& ipa, const InstallableTweak* tweak);

}  // namespace tavlen::cli
