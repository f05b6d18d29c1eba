#include "cli/commands/hooks/HookEdit.h"

#include <algorithm>
#include <stdexcept>
#include <string>
#include <vector>

#include "cli/terminal/Console.h"
#include "cli/terminal/ShownText.h"
#include "cli/tweaks/HookOutput.h"
#include "cli/tweaks/TweakChanges.h"
#include "tavlen/tweaks/Manifest.h"

namespace tavlen::cli {

namespace {

auto isOf(const MethodIdentity& identity) {
  return
      [&identity](const BoxedOptional<Hook>& hook) { return hook && hook->identity() == identity; };
}

}  // namespace

void addHookEdit(Command command, HookEdit& edit) {
  command.flag("--json", edit.json,
               "Print the hook as a JSON object; with --dry-run, the changes as an array");
  command.flag("--dry-run", edit.isDryRun, "Print what would change, and store nothing");
}

void requireFree(const TweakFile::Manifest& manifest, const MethodIdentity& identity) {
  const auto found = std::find_if(manifest._hooks.begin(), manifest._hooks.end(), isOf(identity));
  if (found == manifest._hooks.end()) return;
  const auto& name = (*found)->customName;
  throw std::runtime_error("the tweak already hooks " + methodText(identity) +
                           (name ? ", as \"" + *name + "\"" : ""));
}

void storeHook(const HookManager& manager, const Hook& hook, const HookEdit& edit) {
  if (!edit.isDryRun) {
    manager.setHook(hook);
    if (edit.json) printJSON(rowOf(hook));
    return;
  }
  TweakFile::Manifest after = *manager.opened;
  const auto found = std::find_if(after._hooks.begin(), after._hooks.end(), isOf(manager.identity));
  if (found == after._hooks.end()) {
    after._hooks.emplace_back(hook);
  } else {
    *found = hook;
  }
  printChanges(changesBetween(*manager.opened, after), edit.json);
}

void removeHook(const HookManager& manager, const HookEdit& edit) {
  const Hook removed = manager.hook();
  if (!edit.isDryRun) {
    manager.deleteHook();
    if (edit.json) printJSON(rowOf(removed));
    return;
  }
  TweakFile::Manifest after = *manager.opened;
  std::erase_if(after._hooks, isOf(manager.identity));
  printChanges(changesBetween(*manager.opened, after), edit.json);
}

}  // namespace tavlen::cli
