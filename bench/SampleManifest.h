#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "tavlen/tweaks/Manifest.h"

namespace tavlen::bench {

/// `count` hooks, ten for each class, with three parameters each; all kinds occur equally often.
/// The same in every run.
std::vector<Hook> sampleHooks(std::size_t count);

/// A manifest of `hookCount` hooks, with a configuration and without overrides.
TweakFile::Manifest sampleManifest(std::size_t hookCount);

/// A source for the transpiler of at least `size` bytes: one half is generated hook source, the
/// other half a user's script.
std::string sampleSource(std::size_t size);

}  // namespace tavlen::bench
