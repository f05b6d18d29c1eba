#pragma once

#include <string>
#include <vector>

#include "cli/arguments/TweakArgument.h"

namespace tavlen::cli {

/// What is questionable in the documents of `tweak`, each a line that begins with the file and the
/// place. A tweak with such places still builds: a signature that disagrees with its selector, an
/// index that the method does not have, a method hooked twice, a resource that is missing or lies
/// outside its folder, a glyph that is not known.
std::vector<std::string> warningsFor(const OpenedTweak& tweak);

}  // namespace tavlen::cli
