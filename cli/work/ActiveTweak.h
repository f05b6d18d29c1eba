#pragma once

#include <string>

namespace tavlen {
class IPA;
class InstallableTweak;
}  // namespace tavlen

namespace tavlen::cli {

/// Whether the record of the app `bundleID` names the item `id`.
bool isActiveTweak(const std::string& bundleID, const std::string& id);

/// IPA::setActiveTweak() with errors for users: the helper's name it.
void setActiveTweak(IPA& ipa, const InstallableTweak* tweak);

}  // namespace tavlen::cli
