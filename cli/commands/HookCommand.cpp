#include <functional>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "cli/arguments/HookArgument.h"
#include "cli/arguments/StoredItem.h"
#include "cli/arguments/WithPlace.h"
#include "cli/commands/Commands.h"
#include "cli/terminal/Console.h"
#include "cli/terminal/ShownText.h"
#include "cli/terminal/TextTable.h"
#include "cli/work/MethodSearch.h"
#include "cli/work/StoreLock.h"
#include "cli/work/TweakForReading.h"
#include "cli/work/TweakResources.h"
#include "tavlen/tweaks/HookCheck.h"
#include "tavlen/tweaks/Manifest.h"

namespace tavlen::cli {

namespace {

struct Options {
  std::string tweak;
  std::string hook;
  std::optional<std::string> className;
  std::optional<std::string> selector;
  std::optional<std::string> signature;
  std::optional<std::string> name;
  std::optional<std::string> method;
  ImageArgument image;
  bool isClassMethod = false;
  bool isInstanceMethod = false;
  bool hasNoName = false;
  bool json = false;
};

void warnOfSignature(const Hook& hook) {
  if (const auto problem = signatureProblem(hook)) printWarning("the signature " + *problem);
}

/// Throws if the tweak already has a hook of that method, and names that hook.
void requireFree(const TweakFile::Manifest& manifest, const MethodIdentity& identity) {
  for (const auto& hook : manifest._hooks) {
    if (!hook || hook->identity() != identity) continue;
    throw std::runtime_error("the tweak already hooks " + methodText(identity) +
                             (hook->customName ? ", as \"" + *hook->customName + "\"" : ""));
  }
}

std::string methodProblem(const std::string& text) {
  return methodNamed(text) ? "" : "not '-[Class selector]' or '+[Class selector]': " + text;
}

/// A hook of a method in the image, with the method's type encoding.
Hook dumpedHook(const Options& options) {
  const MethodIdentity wanted = *methodNamed(*options.method);
  const ClassDump dump = dumpClasses(options.image, wanted.className);
  if (const auto method = ownMethod(dump, wanted)) {
    return Hook::with(wanted.className, wanted.selector, method->encoding.str(),
                      wanted.isClassMethod, {});
  }
  reportFaults(dump, options.image);
  throw std::runtime_error(
      options.image.image +
      (hasClass(dump, wanted.className)
           ? ": " + wanted.className + " has no method " + methodText(wanted) + " of its own"
           : ": defines no class " + wanted.className));
}

Hook newHook(const Options& options) {
  if (options.method) return dumpedHook(options);
  return Hook::with(options.className.value_or(""), options.selector.value_or(""),
                    options.signature.value_or(""), options.isClassMethod, {});
}

void addHook(const Options& options) {
  // A wrong name is reported before the image is read, which takes long: without the lock.
  if (options.method) openedTweak(options.tweak);
  const Hook plain = newHook(options);
  const StoreLock lock(options.tweak);
  TweakFile::Opened tweak = openedTweak(options.tweak);
  withPlace(options.tweak + ": " + methodText(plain.identity()), [&] {
    requireFree(tweak.manifest, plain.identity());
    Hook hook = plain;
    hook.customName = options.name;
    HookManager{tweak.file, plain.identity(),
                std::make_shared<TweakFile::Manifest>(std::move(tweak.manifest))}
        .setHook(hook);
  });
  warnOfSignature(plain);
}

void applyTo(Hook& hook, const Options& options) {
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
  Hook changed;
  withPlace(options.tweak + ": " + options.hook, [&] {
    const HookManager manager = hookArgument(std::move(tweak), options.hook);
    manager.updateHook([&](Hook& hook) {
      applyTo(hook, options);
      if (hook.identity() != manager.identity) requireFree(*manager.opened, hook.identity());
      changed = hook;
    });
  });
  if (options.selector || options.signature) warnOfSignature(changed);
}

void removeHook(const Options& options) {
  TweakFile::Opened tweak = openedTweak(options.tweak);
  const UnusedResourceNote note(tweak);
  withPlace(options.tweak + ": " + options.hook,
            [&] { hookArgument(std::move(tweak), options.hook).deleteHook(); });
  note.print();
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
  if (options.json) return printData(shownJSON(hooks) + "\n");
  if (!hooks.empty()) printData(table(hooks));
}

using SharedOptions = std::shared_ptr<Options>;

/// Adds a subcommand of `hook` with the argument TWEAK.
Command addTo(Command group, const char* name, const char* help, const SharedOptions& options) {
  Command command = group.addCommand(name, help);
  command.text("TWEAK", options->tweak, kTweakHelp).required().notEmpty();
  return command;
}

Action actionOf(const SharedOptions& options, void (*edit)(const Options&)) {
  return [options, edit] {
    edit(*options);
    return 0;
  };
}

void addAdd(Command group) {
  const auto options = std::make_shared<Options>();
  Command command = addTo(group, "add", "Hook a method", options);
  const Option cls = command.text("CLASS", options->className, "The method's class").notEmpty();
  const Option selector =
      command.text("SELECTOR", options->selector, "The method's selector").notEmpty();
  const Option signature =
      command
          .text("--signature", options->signature, "The method's type encoding, such as v24@0:8@16")
          .notEmpty()
          .typeName("TYPES");
  const Option sign = command.flag("--class-method", options->isClassMethod, "Hook a class method");
  Option method = command
                      .text("--method", options->method,
                            "Instead of these: a method of the image given by --in")
                      .notEmpty()
                      .check(methodProblem)
                      .typeName("'-[CLASS SELECTOR]'");
  for (const Option& typed : {cls, selector, signature, sign}) method.excludes(typed);
  ImageOptions image = addImageArgument(command, "--in", options->image);
  image.image.needs(method);
  for (Option& option : image.others) option.needs(method);
  method.needs(image.image);
  command.text("--name", options->name, "A name to show for the hook").notEmpty().typeName("NAME");
  command.prepare([=]() -> Action {
    if (!method.isGiven()) {
      for (const Option& typed : {cls, selector, signature}) typed.requireGiven();
    }
    return actionOf(options, addHook);
  });
}

void addRemove(Command group) {
  const auto options = std::make_shared<Options>();
  Command command = addTo(group, "remove", "Remove a hook and its parameters", options);
  addHookArgument(command, options->hook);
  runEdit(command, options->tweak, actionOf(options, removeHook));
}

void addList(Command group) {
  const auto options = std::make_shared<Options>();
  Command command = addTo(group, "list", "List the hooks", options);
  command.flag("--json", options->json, "Print a JSON array in the form of the manifest");
  command.run(actionOf(options, listHooks));
}

void addSet(Command group) {
  const auto options = std::make_shared<Options>();
  Command command = addTo(group, "set", "Change a hook, but not its parameters", options);
  addHookArgument(command, options->hook);
  Command changes = command.addGroup("Changes", "", 1, 0);
  changes.text("--class", options->className, "Another class").notEmpty().typeName("CLASS");
  changes.text("--selector", options->selector, "Another selector").notEmpty().typeName("SELECTOR");
  changes.text("--signature", options->signature, "Another type encoding")
      .notEmpty()
      .typeName("TYPES");
  const Option isClass =
      changes.flag("--class-method", options->isClassMethod, "Make it a class method");
  changes.flag("--instance-method", options->isInstanceMethod, "Make it an instance method")
      .excludes(isClass);
  const Option name =
      changes.text("--name", options->name, "A name to show").notEmpty().typeName("NAME");
  changes.flag("--no-name", options->hasNoName, "Show no name").excludes(name);
  runEdit(command, options->tweak, actionOf(options, setHook));
}

}  // namespace

void addHookCommand(Command app) {
  Command group = app.addCommand("hook", "List and edit the hooks of a tweak");
  group.requireCommand();
  addAdd(group);
  addRemove(group);
  addList(group);
  addSet(group);
}

}  // namespace tavlen::cli
