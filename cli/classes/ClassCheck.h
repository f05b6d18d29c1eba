#pragma once

#include <vector>

#include "cli/classes/ClassDump.h"
#include "tavlen/tweaks/ManifestCheck.h"

namespace tavlen::cli {

/// The problems of hooks whose methods `dump` does not have as the hooks expect: no such class, no
/// such method in the class or in those of its superclasses that the dump has, or other types. The
/// nearest names are suggested for the first hundred of them. In the order of the hooks.
std::vector<TweakProblem> classProblemsOf(const TweakFile::Manifest& manifest,
                                          const ClassDump& dump);

}  // namespace tavlen::cli
