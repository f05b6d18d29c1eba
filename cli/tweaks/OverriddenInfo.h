#pragma once

#include <string>

#include "tavlen/tweaks/Manifest.h"

namespace tavlen::cli {

/// An Info.plist that holds nothing but the values that the tweak's overrides set. Throws
/// EncodingError.
std::string overriddenInfo(const TweakFile::Manifest& manifest);

}  // namespace tavlen::cli
