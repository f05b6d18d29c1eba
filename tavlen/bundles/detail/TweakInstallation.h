#pragma once

#include <string>

namespace tavlen {

class InstallableTweak;
struct Info;

/// Implements IPA::setActiveTweak() for the app with the Info `target`, with the same errors. The
/// app's identifier must be a single path component.
void installActiveTweak(const Info& target, const InstallableTweak* tweak);

}  // namespace tavlen
