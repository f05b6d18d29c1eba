#pragma once

#include <filesystem>
#include <vector>

#include "cli/arguments/TweakArgument.h"
#include "cli/terminal/Diagnostic.h"
#include "tavlen/tweaks/ManifestCheck.h"

namespace tavlen::cli {

/// What a tweak in `folder` is checked against: its resources, and the apps of this device. Has no
/// script. Throws std::system_error.
TweakSurroundings surroundingsOf(const std::filesystem::path& folder);

/// Problems of `tweak` as warnings at their places in the text, the document or the file.
std::vector<Diagnostic> warningsFrom(const std::vector<TweakProblem>& problems,
                                     const OpenedTweak& tweak);

/// The problems of a text as warnings at places in it. A resource that is in the folder `target` of
/// the tweak that the text is to change is not missing if that tweak keeps it; an empty path stands
/// for no tweak.
std::vector<Diagnostic> warningsFor(const TextInput& input, const std::filesystem::path& target);

/// Prints warnings about mistakes with which `tweak` still builds: the keys of its document that
/// are ignored, and its problemsOf(). Throws as surroundingsOf() does.
void printWarnings(const OpenedTweak& tweak);
/// The same for a tweak that messages call `folder`. Reads its script.
void printWarnings(const TweakFile::Opened& tweak, const std::string& folder);
/// The same for a tweak that is to be installed: of entries that cannot be packaged, only of those
/// that are copied then.
void printWarningsOfInstallation(const TweakFile::Opened& tweak, bool copiesExecutables);

}  // namespace tavlen::cli
