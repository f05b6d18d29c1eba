#include <CLI/CLI.hpp>
#include <algorithm>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "cli/ArgumentChecks.h"
#include "cli/ClassDump.h"
#include "cli/Commands.h"
#include "cli/Console.h"
#include "cli/ErrorPlace.h"
#include "cli/HookArgument.h"
#include "cli/StoredItem.h"
#include "cli/TextTable.h"
#include "tavlen/collections/TweakPoster.h"
#include "tavlen/foundation/JSONEncoder.h"
#include "tavlen/foundation/MethodTypes.h"
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

/// The library stores any signature; one that does not fit its selector is most likely mistyped.
void warnOfSignature(const Hook& hook) {
  const auto types = splitMethodTypes(hook.signature);
  const auto colons = std::count(hook.selector.begin(), hook.selector.end(), ':');
  const auto expected = static_cast<std::size_t>(colons) + 2;  // with the receiver, the selector
  if (!types || types->arguments.size() != expected) {
    printWarning("the signature \"" + hook.signature + "\" does not fit the selector \"" +
                 hook.selector + "\"");
  }
}

void requireFree(const HookManager& manager) {
  const auto hooks = manager.tweak->manifest()._hooks;
  const bool isTaken = std::any_of(hooks.begin(), hooks.end(), [&](const auto& hook) {
    return hook && hook->identity() == manager.identity;
  });
  if (isTaken) throw std::runtime_error("the tweak hooks that method already");
}

CLI::Validator isMethod() {
  return {[](const std::string& text) {
            return methodNamed(text) ? std::string()
                                     : "not '-[Class selector]' or '+[Class selector]': " + text;
          },
          ""};
}

/// The hook of a method that the image has, with the types that it has there.
Hook dumpedHook(const Options& options) {
  const MethodIdentity wanted = *methodNamed(*options.method);
  const std::shared_ptr<ObjCClass> cls = dumpedClass(options.image, wanted.className);
  for (const auto& [method, identity] : cls->methodIdentities()) {
    if (identity == wanted) return Hook::with(*cls, *method, {});
  }
  throw std::runtime_error(options.image.image + ": " + wanted.className + " has no method " +
                           methodText(wanted) + " of its own");
}

Hook newHook(const Options& options) {
  if (options.method) return dumpedHook(options);
  return Hook::with(options.className.value_or(""), options.selector.value_or(""),
                    options.signature.value_or(""), options.isClassMethod, {});
}

void addHook(const Options& options) {
  const auto tweak = storedTweak(options.tweak);
  const Hook plain = newHook(options);
  naming(options.tweak + ": " + methodText(plain.identity()), [&] {
    const std::lock_guard lock(tweakPoster().recursiveLock);
    const HookManager manager = tweak->managerFor(plain.identity());
    requireFree(manager);
    Hook hook = plain;
    hook.customName = options.name;
    manager.setHook(hook);
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
  const auto tweak = storedTweak(options.tweak);
  Hook changed;
  naming(options.tweak + ": " + options.hook, [&] {
    const std::lock_guard lock(tweakPoster().recursiveLock);
    const HookManager manager = hookArgument(tweak, options.hook);
    manager.updateHook([&](Hook& hook) {
      applyTo(hook, options);
      if (hook.identity() != manager.identity) requireFree(tweak->managerFor(hook.identity()));
      changed = hook;
    });
  });
  if (options.selector || options.signature) warnOfSignature(changed);
}

void removeHook(const Options& options) {
  const auto tweak = storedTweak(options.tweak);
  naming(options.tweak + ": " + options.hook, [&] {
    const std::lock_guard lock(tweakPoster().recursiveLock);
    hookArgument(tweak, options.hook).deleteHook();
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
  const auto tweak = storedTweak(options.tweak);
  const std::vector<Hook> hooks = naming(options.tweak, [&] { return tweak->manifest().hooks(); });
  if (options.json) return printData(encodeJSON(hooks) + "\n");
  if (!hooks.empty()) printData(table(hooks));
}

/// A subcommand of `hook`, with the options that all have.
CLI::App* addTo(CLI::App& group, Action& action, const char* name, const char* help,
                const std::shared_ptr<Options>& options, void (*run)(const Options&)) {
  CLI::App* command = group.add_subcommand(name, help);
  command->add_option("TWEAK", options->tweak, kTweakHelp)->required()->check(notEmpty());
  command->callback([options, run, &action] {
    action = [options, run] {
      run(*options);
      return 0;
    };
  });
  return command;
}

CLI::Option* addText(CLI::App& command, const char* name, std::optional<std::string>& text,
                     const char* help) {
  return command.add_option(name, text, help)->check(notEmpty());
}

void addAdd(CLI::App& group, Action& action) {
  const auto options = std::make_shared<Options>();
  CLI::App& command = *addTo(group, action, "add", "Hook a method", options, addHook);
  auto* cls = addText(command, "CLASS", options->className, "The method's class");
  auto* selector = addText(command, "SELECTOR", options->selector, "The method's selector");
  auto* signature = addText(command, "--signature", options->signature,
                            "The method's type encoding, such as v24@0:8@16")
                        ->type_name("TYPES");
  auto* sign = command.add_flag("--class-method", options->isClassMethod, "It is a class method");
  auto* method = addText(command, "--method", options->method,
                         "Instead of these, a method that the image of --in has")
                     ->check(isMethod())
                     ->type_name("'-[CLASS SELECTOR]'");
  for (CLI::Option* typed : {cls, selector, signature, sign}) method->excludes(typed);
  const ImageOptions image = addImageArgument(command, "--in", options->image);
  image.image->needs(method);
  image.parser->needs(method);
  method->needs(image.image);
  addText(command, "--name", options->name, "A name to show for the hook")->type_name("NAME");
  command.parse_complete_callback([=] {
    if (!method->empty()) return;
    for (const CLI::Option* typed : {cls, selector, signature}) {
      if (typed->empty()) throw CLI::RequiredError(typed->get_name());
    }
  });
}

void addSet(CLI::App& group, Action& action) {
  const auto options = std::make_shared<Options>();
  CLI::App& command =
      *addTo(group, action, "set", "Change a hook; its parameters stay", options, setHook);
  addHookArgument(command, options->hook);
  CLI::App& changes = *command.add_option_group("Changes");
  changes.require_option(1, 0);
  addText(changes, "--class", options->className, "Another class")->type_name("CLASS");
  addText(changes, "--selector", options->selector, "Another selector")->type_name("SELECTOR");
  addText(changes, "--signature", options->signature, "Another type encoding")->type_name("TYPES");
  auto* isClass =
      changes.add_flag("--class-method", options->isClassMethod, "Make it a class method");
  changes.add_flag("--instance-method", options->isInstanceMethod, "Make it an instance method")
      ->excludes(isClass);
  auto* name = addText(changes, "--name", options->name, "A name to show")->type_name("NAME");
  changes.add_flag("--no-name", options->hasNoName, "Show no name")->excludes(name);
}

}  // namespace

void addHookCommand(CLI::App& app, Action& action) {
  CLI::App& group = *app.add_subcommand("hook", "List and edit the hooks of a tweak");
  group.require_subcommand(1);
  addAdd(group, action);
  const auto removal = std::make_shared<Options>();
  addHookArgument(
      *addTo(group, action, "remove", "Remove a hook and its parameters", removal, removeHook),
      removal->hook);
  const auto listing = std::make_shared<Options>();
  addTo(group, action, "list", "List the hooks", listing, listHooks)
      ->add_flag("--json", listing->json, "Print a JSON array, as the manifest holds it");
  addSet(group, action);
}

}  // namespace tavlen::cli
