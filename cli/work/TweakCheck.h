#pragma once

#include <vector>

#include "cli/arguments/TweakArgument.h"
#include "cli/terminal/Diagnostic.h"

namespace tavlen::cli {

/// Warnings about the documents of `tweak`; each is one line that begins with the file and the
/// place. They cover mistakes with which a tweak still builds: those of problemsOf() a hook, a
/// method hooked twice, a resource that is missing or lies outside its folder, and an unknown
/// glyph.
std::vector<Diagnostic> warningsFor(const OpenedTweak& tweak);

}  // namespace tavlen::cli
