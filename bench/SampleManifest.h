#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "tavlen/tweaks/Manifest.h"

namespace tavlen::bench {

/// `count` hooks, ten a class, with three parameters each: all kinds equally often. The same in
/// every run.
std::vector<Hook> sampleHooks(std::size_t count);

/// A manifest of as many hooks, with a configuration and no overrides.
TweakFile::Manifest sampleManifest(std::size_t hookCount);

/// A source of at least `size` bytes, as the transpiler gets it: one half is generated hook source,
/// the other a user's script.
std::string sampleSource(std::size_t size);

}  // namespace tavlen::bench
