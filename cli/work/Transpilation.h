#pragma once

#include <filesystem>
#include <optional>

#include "cli/arguments/TweakArgument.h"
#include "tavlen/tweaks/TweakProcessor.h"

namespace tavlen::cli {

/// Converts `tweak` with the transpiler in the folder `transpiler`.
///
/// A syntax error is reported on the standard error stream as compilers do it, in the script at its
/// line and column, in generated text at the hook that it came from; the result is then empty.
/// Throws what TweakProcessor throws otherwise.
std::optional<TweakProcessor::Output> transpile(const OpenedTweak& tweak,
                                                const std::filesystem::path& transpiler);

}  // namespace tavlen::cli
