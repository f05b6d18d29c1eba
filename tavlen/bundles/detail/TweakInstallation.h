#pragma once

#include <string>

namespace tavlen {

class InstallableTweak;

/// Makes `tweak`, or none when it is null, the active tweak of the app with that identifier, which
/// is one plain component: the work of IPA::setActiveTweak(), whose errors it throws.
void installActiveTweak(const std::string& bundleID, const InstallableTweak* tweak);

}  // namespace tavlen
