#pragma once

#include <string>

#include "tavlen/tweaks/Manifest.h"

namespace tavlen::cli {

/// An Info.plist that holds nothing but the values that the tweak's overrides set, and the keys
/// that they remove, under loaderSettings::kRemovedKeys. Throws EncodingError.
std::string overriddenInfo(const TweakFile::Manifest& manifest);

}  // namespace tavlen::cli
