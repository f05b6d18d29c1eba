#include "cli/commands/hooks/HookAddition.h"

#include <charconv>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "cli/arguments/AppArgument.h"
#include "cli/arguments/HookArgument.h"
#include "cli/arguments/StoredItem.h"
#include "cli/arguments/UsageError.h"
#include "cli/arguments/WithPlace.h"
#include "cli/classes/MethodSearch.h"
#include "cli/commands/hooks/HookEdit.h"
#include "cli/commands/hooks/ParamArguments.h"
#include "cli/items/StoreLock.h"
#include "cli/terminal/ShownText.h"
#include "cli/tweaks/HookOutput.h"
#include "tavlen/tweaks/Manifest.h"

namespace tavlen::cli {

namespace {

struct Options {
  std::string tweak;
  std::string method;
  std::optional<std::string> signature;
  ImageArgument image;
  std::optional<std::string> result;
  std::vector<std::string> arguments;
  std::optional<std::string> name;
  bool replaces = false;
  HookEdit edit;
};

/// The parameters of a new hook by their indices.
using Values = std::map<std::int64_t, TypedValue>;

void add(Values& values, std::int64_t index, const std::string& text, const char* option) {
  if (!values.emplace(index, parseTypedValue(text, option)).second)
    throw UsageError(option, std::to_string(index) + ": has several values");
}

/// Reads --return and every --arg. Throws UsageError.
Values valuesOf(const Options& options) {
  Values values;
  if (options.result) add(values, Hook::kReturnValue, *options.result, "--return");
  for (const std::string& text : options.arguments) {
    const std::size_t sign = text.find('=');
    const char* const end = text.data() + std::min(sign, text.size());
    std::int64_t index = 0;
    const auto [last, error] = std::from_chars(text.data(), end, index);
    if (sign == std::string::npos || error != std::errc() || last != end)
      throw UsageError("--arg", text + ": expected INDEX=VALUE, such as 0=int:5");
    add(values, index, text.substr(sign + 1), "--arg");
  }
  return values;
}

/// The images in which to look for the method: those of --in, or of the tweak's app.
ImageArgument imagesFor(const Options& options) {
  ImageArgument images = options.image;
  const TweakFile::Opened tweak = openedTweak(options.tweak);
  if (!images.image.empty()) return images;
  const std::string& app = tweak.manifest.configuration.bundleID;
  try {
    // By its path: the identifier in a tweak from elsewhere must not name a file to load.
    images.image = appWithBundleID(app)->appDir().string();
    images.bundleID = app;
  } catch (const std::exception& error) {
    throw std::runtime_error(options.tweak +
                             ": without --in or --signature, the method's types come from the "
                             "tweak's app: " +
                             errorText(error));
  }
  return images;
}

/// The type encoding of the method in the images.
std::string encodingOf(const MethodIdentity& method, const Options& options) {
  // A wrong tweak is reported before the images are read, which takes long: without the lock.
  const ImageArgument images = imagesFor(options);
  const ClassDump dump = dumpClasses(images, method.className);
  if (const auto found = ownMethod(dump, method)) return found->encoding.str();
  reportFaults(dump, images);
  throw std::runtime_error(images.shown() + ": " + missingMethodText(dump, method));
}

Hook newHook(const Options& options, const Values& values) {
  const MethodIdentity method = *methodNamed(options.method);
  Hook hook = Hook::with(method.className, method.selector,
                         options.signature ? *options.signature : encodingOf(method, options),
                         method.isClassMethod, {});
  hook.customName = options.name;
  for (const auto& [index, value] : values) hook._args[index].value = value.parameter;
  return hook;
}

std::vector<TypedValue> listOf(const Values& values) {
  std::vector<TypedValue> list;
  for (const auto& entry : values) list.push_back(entry.second);
  return list;
}

int addHook(const Options& options, const Values& values) {
  const Hook hook = newHook(options, values);
  const StoreLock lock(options.tweak);
  TweakFile::Opened tweak = openedTweak(options.tweak);
  withPlace(options.tweak + ": " + options.method, [&] {
    requireFree(tweak.manifest, hook.identity());
    const HookManager manager = {tweak.file, hook.identity(),
                                 std::make_shared<TweakFile::Manifest>(std::move(tweak.manifest))};
    std::vector<ResourceImport> imports =
        startImports(listOf(values), *tweak.file, options.replaces);
    // The files first, so that the manifest never names a missing one.
    if (!options.edit.isDryRun) {
      for (ResourceImport& file : imports) file.commit();
    }
    storeHook(manager, hook, options.edit);
  });
  warnOfProblems(options.tweak, hook);
  return 0;
}

void addTypes(Command command, Options& options) {
  const Option signature =
      command
          .text("--signature", options.signature,
                "The method's type encoding, such as v24@0:8@16; if neither it nor --in is given, "
                "it is read from the tweak's app")
          .notEmpty()
          .utf8()
          .typeName("TYPES");
  ImageOptions image = addImageArgument(command, "--in", options.image);
  image.image.excludes(signature);
  for (Option& option : image.others) option.excludes(signature);
}

void addValues(Command command, Options& options) {
  command
      .text("--return", options.result,
            "What the method returns instead of its own result; VALUE as for param set")
      .typeName("VALUE");
  command
      .repeated("--arg", options.arguments,
                "What replaces an argument, from 0; may be given several times")
      .typeName("INDEX=VALUE");
  addReplaceFlag(command, options.replaces);
}

}  // namespace

void addHookAddition(Command group) {
  const auto options = std::make_shared<Options>();
  Command command = group.addCommand("add", "Hook a method");
  command.text("TWEAK", options->tweak, kTweakHelp).required().notEmpty();
  addMethodArgument(command, options->method,
                    "The method: '-[Class selector]', or '+[Class selector]' for a class method")
      .utf8();
  addTypes(command, *options);
  addValues(command, *options);
  command.text("--name", options->name, "A name to show for the hook")
      .notEmpty()
      .utf8()
      .typeName("NAME");
  addHookEdit(command, options->edit);
  command.prepare([options]() -> Action {
    return [options, values = valuesOf(*options)] { return addHook(*options, values); };
  });
}

}  // namespace tavlen::cli
