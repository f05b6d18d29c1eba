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

/// Problems of `tweak` as warnings at their places in the document or the file.
std::vector<Diagnostic> warningsFrom(const std::vector<TweakProblem>& problems,
                                     const OpenedTweak& tweak);

/// Prints warnings about mistakes with which `tweak` still builds: the keys of its document that
/// are ignored, and its problemsOf(). Throws as surroundingsOf() does.
void printWarnings(const OpenedTweak& tweak);
/// The same for a tweak that messages call `folder`. Reads its script.
void printWarnings(const TweakFile::Opened& tweak, const std::string& folder);

}  // namespace tavlen::cli
