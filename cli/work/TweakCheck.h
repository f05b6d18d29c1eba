#pragma once

#include <filesystem>
#include <vector>

#include "cli/arguments/TweakArgument.h"
#include "cli/terminal/Diagnostic.h"
#include "tavlen/tweaks/ManifestCheck.h"

namespace tavlen::cli {

/// What a tweak in `folder` is checked against: its resources, and the apps of this device. Has no
/// script. Throws std::system_error.
TweakSurroundings surroundingsOf(std::filesystem::path folder);

/// Warnings about mistakes with which `tweak` still builds: the keys of its document that are
/// ignored, and its problemsOf(), at their places in the document or the file. Throws as
/// surroundingsOf() does.
std::vector<Diagnostic> warningsFor(const OpenedTweak& tweak);

}  // namespace tavlen::cli
