#pragma once

#include <string>

namespace tavlen {

class InstallableTweak;
struct Info;

/// Makes `tweak`, or none when it is null, the active tweak of the app that says `target` of
/// itself; its identifier is one plain component. The work of IPA::setActiveTweak(), whose errors
/// it throws.
void installActiveTweak(const Info& target, const InstallableTweak* tweak);

}  // namespace tavlen
