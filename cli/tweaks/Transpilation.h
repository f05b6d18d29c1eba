#pragma once

#include <filesystem>
#include <optional>
#include <string>

#include "cli/arguments/TweakArgument.h"
#include "cli/terminal/Diagnostic.h"
#include "tavlen/foundation/text/TextLines.h"
#include "tavlen/tweaks/TweakProcessor.h"
#include "tavlen/tweaks/TweakSource.h"

namespace tavlen::cli {

/// Converts `source`, the text of `tweak`, with the transpiler in the folder `transpiler`.
///
/// A syntax error is reported on the standard error stream in the format of compilers: in the
/// script with line and column, in generated text with the hook that caused it. The result is then
/// empty. Throws TweakProcessor's errors except for syntax errors.
std::optional<TweakProcessor::Output> transpile(const OpenedTweak& tweak, const TweakSource& source,
                                                const std::filesystem::path& transpiler,
                                                TweakProcessor::Map map);
/// The same for the text of the tweak's hooks and script.
std::optional<TweakProcessor::Output> transpile(const OpenedTweak& tweak,
                                                const std::filesystem::path& transpiler,
                                                TweakProcessor::Map map);

/// Why a text's tweak does not convert with the command's own transpiler, at its place in the text
/// or in the script; nothing if it converts. Reasons other than syntax errors have no place.
std::optional<Diagnostic> conversionErrorOf(const TextInput& input);

/// A message about a hook, without the message: the document, and the hook's index in it or, in a
/// text, the place of its method. `hook` is the index without the empty entries.
Diagnostic atHook(const OpenedTweak& tweak, std::size_t hook);
/// The same for the byte `offset` of the hook's keyedOBJSFunc(): about the value whose statement is
/// there, if there is one.
Diagnostic atHookText(const OpenedTweak& tweak, std::size_t hook, std::size_t offset);

/// A message about a place in the script, without the message.
Diagnostic atScript(const OpenedTweak& tweak, TextPosition place);

}  // namespace tavlen::cli
