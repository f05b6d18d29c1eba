#pragma once

#include <memory>
#include <string>

#include "cli/arguments/CommandLine.h"
#include "tavlen/editing/HookManager.h"
#include "tavlen/tweaks/Manifest.h"

namespace tavlen::cli {

/// Adds the argument METHOD, '-[Class selector]' or '+[Class selector]'. Parsing stores it in
/// `text`; other texts are wrong usage.
Option addMethodArgument(Command command, std::string& text, const char* help);

/// The message for a text that is not a method; empty for a method.
std::string methodProblem(const std::string& text);

/// Adds the argument HOOK, for hookArgument(). Parsing stores it in `text`.
void addHookArgument(Command command, std::string& text);

/// An editor for the hook with that method, in the form of methodText(), or with that custom name,
/// which must be unique. The editor uses the manifest of `tweak` instead of reading it again.
/// Throws std::runtime_error for a hook that the tweak does not have, perhaps with a suggestion,
/// and for a name that several hooks have.
HookManager hookArgument(TweakFile::Opened tweak, const std::string& text);

}  // namespace tavlen::cli
