#pragma once

#include <filesystem>
#include <optional>

#include "cli/arguments/TweakArgument.h"
#include "tavlen/tweaks/TweakProcessor.h"

namespace tavlen::cli {

/// Converts `tweak` with the transpiler in the folder `transpiler`.
///
/// A syntax error is reported on the standard error stream in the format of compilers: in the
/// script with line and column, in generated text with the hook that caused it. The result is then
/// empty. Throws TweakProcessor's errors except for syntax errors.
std::optional<TweakProcessor::Output> transpile(const OpenedTweak& tweak,
                                                const std::filesystem::path& transpiler);

}  // namespace tavlen::cli
