#include <algorithm>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "cli/arguments/HookArgument.h"
#include "cli/arguments/ListPlace.h"
#include "cli/arguments/StoredItem.h"
#include "cli/arguments/WithPlace.h"
#include "cli/commands/Commands.h"
#include "cli/commands/hooks/HookAddition.h"
#include "cli/commands/hooks/HookEdit.h"
#include "cli/items/StoreLock.h"
#include "cli/terminal/Console.h"
#include "cli/terminal/ShownText.h"
#include "cli/terminal/TextTable.h"
#include "cli/tweaks/HookOutput.h"
#include "cli/tweaks/TweakForReading.h"
#include "cli/tweaks/TweakResources.h"
#include "tavlen/tweaks/Manifest.h"

namespace tavlen::cli {

namespace {

struct Options {
  std::string tweak;
  std::string hook;
  std::optional<std::string> method;
  std::optional<std::string> className;
  std::optional<std::string> selector;
  std::optional<std::string> signature;
  std::optional<std::string> name;
  std::string to;
  bool isClassMethod = false;
  bool isInstanceMethod = false;
  bool hasNoName = false;
  bool json = false;
  HookEdit edit;
};

void applyTo(Hook& hook, const Options& options) {
  if (options.method) {
    MethodIdentity identity = *methodNamed(*options.method);
    hook.className = std::move(identity.className);
    hook.selector = std::move(identity.selector);
    hook.isClassMethod = identity.isClassMethod;
  }
  if (options.className) hook.className = *options.className;
  if (options.selector) hook.selector = *options.selector;
  if (options.signature) hook.signature = *options.signature;
  if (options.isClassMethod) hook.isClassMethod = true;
  if (options.isInstanceMethod) hook.isClassMethod = false;
  if (options.name) hook.customName = options.name;
  if (options.hasNoName) hook.customName.reset();
}

void setHook(const Options& options) {
  TweakFile::Opened tweak = openedTweak(options.tweak);
  Hook hook;
  withPlace(options.tweak + ": " + options.hook, [&] {
    const HookManager manager = hookArgument(std::move(tweak), options.hook);
    hook = manager.hook();
    applyTo(hook, options);
    if (hook.identity() != manager.identity) requireFree(*manager.opened, hook.identity());
    storeHook(manager, hook, options.edit);
  });
  if (options.method || options.selector || options.signature) warnOfProblems(options.tweak, hook);
}

void removeHook(const Options& options) {
  TweakFile::Opened tweak = openedTweak(options.tweak);
  const UnusedResourceNote note(tweak);
  withPlace(options.tweak + ": " + options.hook,
            [&] { removeHook(hookArgument(std::move(tweak), options.hook), options.edit); });
  note.print();
}

/// Moves a hook among the hooks that are not null.
void moveHook(const Options& options, const ListPlace& to) {
  TweakFile::Opened tweak = openedTweak(options.tweak);
  withPlace(options.tweak + ": " + options.hook, [&] {
    const HookManager manager = hookArgument(std::move(tweak), options.hook);
    auto& hooks = manager.opened->_hooks;
    std::vector<std::size_t> places;
    std::size_t from = 0;
    for (std::size_t i = hooks.size(); i-- > 0;) {
      if (!hooks[i]) continue;
      places.push_back(i);
      if (hooks[i]->identity() == manager.identity) from = i;  // the first of several
    }
    std::reverse(places.begin(), places.end());
    moveItem(hooks, from, places[indexOf(to, places.size())]);
    manager.tweak->setManifest(*manager.opened);
    if (options.json) printJSON(rowOf(manager.hook()));
  });
}

std::string table(const std::vector<Hook>& hooks) {
  TextTable table({"NAME", "SIGNATURE", "REPLACES", "HOOK"}, TextTable::LastColumn::whole);
  for (const Hook& hook : hooks) {
    std::string indices;
    for (const auto& entry : hook._args)
      indices += (indices.empty() ? "" : ", ") + std::to_string(entry.first);
    table.addRow(
        {hook.customName.value_or(""), hook.signature, indices, methodText(hook.identity())});
  }
  return table.text();
}

void listHooks(const Options& options) {
  const std::vector<Hook> hooks = tweakForReading(options.tweak).manifest.hooks();
  if (options.json) {
    std::vector<HookRow> rows;
    rows.reserve(hooks.size());
    for (const Hook& hook : hooks) rows.push_back(rowOf(hook));
    return printJSON(rows);
  }
  if (!hooks.empty()) printData(table(hooks));
}

using SharedOptions = std::shared_ptr<Options>;

/// Adds a subcommand of `hook` with the argument TWEAK.
Command addTo(Command group, const char* name, const char* help, const SharedOptions& options,
              const char* tweakHelp = kTweakHelp) {
  Command command = group.addCommand(name, help);
  command.text("TWEAK", options->tweak, tweakHelp).required().notEmpty();
  return command;
}

Action actionOf(const SharedOptions& options, void (*edit)(const Options&)) {
  return [options, edit] {
    edit(*options);
    return 0;
  };
}

void addRemove(Command group) {
  const auto options = std::make_shared<Options>();
  Command command = addTo(group, "remove", "Remove a hook and its parameters", options);
  addHookArgument(command, options->hook);
  addHookEdit(command, options->edit);
  runEdit(command, options->tweak, actionOf(options, removeHook));
}

void addMove(Command group) {
  const auto options = std::make_shared<Options>();
  Command command =
      addTo(group, "move", "Move a hook to another place in the generated code", options);
  addHookArgument(command, options->hook);
  command.text("TO", options->to, kListPlaceHelp).required();
  command.flag("--json", options->json, "Print the hook as a JSON object");
  prepareEdit(command, options->tweak, [options]() -> Action {
    return [options, to = parseListPlace(options->to, "TO")] {
      moveHook(*options, to);
      return 0;
    };
  });
}

void addList(Command group) {
  const auto options = std::make_shared<Options>();
  Command command = addTo(group, "list", "List the hooks", options, kReadTweakHelp);
  command.flag("--json", options->json, "Print a JSON array");
  command.run(actionOf(options, listHooks));
}

void addSet(Command group) {
  const auto options = std::make_shared<Options>();
  Command command = addTo(group, "set", "Change a hook, but not its parameters", options);
  addHookArgument(command, options->hook);
  addHookEdit(command, options->edit);
  Command changes = command.addGroup("Changes", "", 1, 0);
  const Option method = changes.text("--method", options->method, "Another method")
                            .notEmpty()
                            .check(methodProblem)
                            .typeName("METHOD");
  changes.text("--class", options->className, "Another class")
      .notEmpty()
      .typeName("CLASS")
      .excludes(method);
  changes.text("--selector", options->selector, "Another selector")
      .notEmpty()
      .typeName("SELECTOR")
      .excludes(method);
  changes.text("--signature", options->signature, "Another type encoding")
      .notEmpty()
      .typeName("TYPES");
  const Option isClass =
      changes.flag("--class-method", options->isClassMethod, "Make it a class method")
          .excludes(method);
  changes.flag("--instance-method", options->isInstanceMethod, "Make it an instance method")
      .excludes(isClass)
      .excludes(method);
  const Option name =
      changes.text("--name", options->name, "A name to show").notEmpty().typeName("NAME");
  changes.flag("--no-name", options->hasNoName, "Show no name").excludes(name);
  runEdit(command, options->tweak, actionOf(options, setHook));
}

}  // namespace

void addHookCommand(Command app) {
  Command group = app.addCommand("hook", "List and edit the hooks of a tweak");
  group.requireCommand();
  addHookAddition(group);
  addRemove(group);
  addList(group);
  addSet(group);
  addMove(group);
}

}  // namespace tavlen::cli
