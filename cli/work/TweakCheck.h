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

/// Warnings about mistakes with which `tweak` still builds: its problemsOf(), at their places in
/// the document or the file. Throws as surroundingsOf() does.
std::vector<Diagnostic> warningsFor(const OpenedTweak& tweak);

/// The same for a text, at places in it. A resource that is in the folder `target` of the tweak
/// that the text is to change is not missing if that tweak keeps it; an empty path stands for no
/// tweak.
std::vector<Diagnostic> warningsFor(const TextInput& input, const std::filesystem::path& target);

}  // namespace tavlen::cli
