#pragma once

#include <string>

namespace tavlen {
class IPA;
class InstallableTweak;
}  // namespace tavlen

namespace tavlen::cli {

/// Whether the item `id` is the active one of the app `bundleID`, according to the app's record.
bool isActiveTweak(const std::string& bundleID, const std::string& id);

/// As IPA::setActiveTweak(), but the message of a helper's error names the helper.
void setActiveTweak(IPA& ipa, const InstallableTweak* tweak);

}  // namespace tavlen::cli
