#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "cli/arguments/CommandLine.h"
#include "tavlen/editing/HookManager.h"
#include "tavlen/tweaks/Manifest.h"

namespace tavlen::cli {

/// Reads what methodText() writes. Nothing for any other text.
std::optional<MethodIdentity> methodNamed(std::string_view text);

/// Adds the argument HOOK, as hookArgument() takes it.
void addHookArgument(Command command, std::string& text);

/// The editor of the hook that a user names: by its method, as methodText() gives it, or by the
/// hook's own name, which must then be the only one. It goes on with the manifest of `tweak`.
/// Throws HookManager::Error::hookNotFound, and std::runtime_error for a name that several hooks
/// have.
HookManager hookArgument(TweakFile::Opened tweak, const std::string& text);

}  // namespace tavlen::cli
