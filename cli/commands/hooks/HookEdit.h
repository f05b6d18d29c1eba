#pragma once

#include <optional>

#include "cli/arguments/CommandLine.h"
#include "tavlen/editing/HookManager.h"
#include "tavlen/tweaks/Hook.h"

namespace tavlen::cli {

/// How a subcommand of `hook` that edits stores and prints its change.
struct HookEdit {
  bool isDryRun = false;  ///< whether to print the change instead of storing it
  bool json = false;      ///< whether to print the hook as JSON
};

/// Adds `--dry-run` and `--json`. Parsing stores them in `edit`, which must live as long as the
/// command.
void addHookEdit(Command command, HookEdit& edit);

/// Throws std::runtime_error if the tweak already has a hook of that method, and names that hook.
void requireFree(const TweakFile::Manifest& manifest, const MethodIdentity& identity);

/// Makes `hook` the hook of the manager, whose `opened` must be set, or adds it. Throws as
/// HookManager::setHook().
void storeHook(const HookManager& manager, const Hook& hook, const HookEdit& edit);
/// Removes the hook of the manager. Throws as HookManager::deleteHook() and hook().
void removeHook(const HookManager& manager, const HookEdit& edit);

}  // namespace tavlen::cli
