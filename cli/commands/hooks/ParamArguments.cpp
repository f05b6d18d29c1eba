#include "cli/commands/hooks/ParamArguments.h"

#include <algorithm>
#include <filesystem>
#include <iterator>
#include <system_error>
#include <utility>

#include "cli/arguments/HookArgument.h"
#include "cli/arguments/StoredItem.h"
#include "cli/arguments/WithPlace.h"
#include "cli/terminal/Diagnostic.h"
#include "cli/terminal/ShownText.h"
#include "cli/tweaks/TextInput.h"
#include "cli/tweaks/TweakResources.h"
#include "tavlen/device/DeviceFiles.h"
#include "tavlen/parameters/ParameterPath.h"
#include "tavlen/tweaks/ResourceUse.h"

namespace tavlen::cli {

namespace {

bool hasResource(const TweakFile& tweak, const std::string& name) {
  const DeviceRoot root = DeviceRoot::shared();
  const auto place = pathInside(root, root.follow(tweak.resourcesDir()), name);
  return place && std::filesystem::is_regular_file(root.status(*place));
}

/// Whether `file` is not a file but the name of a resource.
bool isResource(const std::string& file, const TweakFile& tweak) {
  std::error_code ignored;
  return file.find('/') == std::string::npos && !std::filesystem::exists(file, ignored) &&
         hasResource(tweak, file);
}

}  // namespace

std::string ParamTarget::place() const {
  return tweak + ": " + hook + (address.empty() ? "" : ": " + address);
}

Option addParamTarget(Command command, ParamTarget& target, const char* addressHelp,
                      const char* tweakHelp) {
  command.text("TWEAK", target.tweak, tweakHelp).required().notEmpty();
  addHookArgument(command, target.hook);
  return command.text("ADDRESS", target.address, addressHelp).notEmpty();
}

void addEditedParam(Command command, ParamTarget& target, const char* addressHelp) {
  addParamTarget(command, target, addressHelp).required();
  command.flag("--json", target.json, "Print a JSON object with the address and the new value");
}

void addParamValue(Command command, ParamValue& value) {
  command.text("VALUE", value.text, kValueHelp).required();
  addReplaceFlag(command, value.replaces);
}

void addReplaceFlag(Command command, bool& replaces) {
  command.flag("--replace", replaces, "Let the file replace a different resource of the same name");
}

std::vector<ResourceImport> startImports(const std::vector<TypedValue>& values,
                                         const TweakFile& tweak, bool replaces) {
  std::vector<TypedValue> withFiles;
  std::copy_if(values.begin(), values.end(), std::back_inserter(withFiles),
               [&](const TypedValue& value) {
                 return !value.file.empty() && !isResource(value.file, tweak);
               });
  return importResources(withFiles, tweak, replaces);
}

void warnOfMissingResources(const ParamTarget& target, const OpenedTweak& tweak,
                            const Parameter& parameter) {
  forEachParameter(parameter, [&](const Parameter& each, const ParameterPath& /*path*/) {
    const std::string* const name = resourceNameIn(each);
    if (name == nullptr || hasResource(*tweak.file, *name)) return;
    print({.severity = Diagnostic::kWarning,
           .message =
               "the resource \"" + *name + "\" is missing, so param set would refuse the value",
           .file = tweak.text ? tweak.text->file : tweak.pathOf(kDocumentFile),
           .place = target.hook + (target.address.empty() ? "" : ": " + target.address),
           .code = "missing-resource"});
  });
}

Hook editHook(const ParamTarget& target,
              FunctionRef<ParamRow(Hook& hook, const TweakFile& tweak)> edit) {
  TweakFile::Opened tweak = openedTweak(target.tweak);
  const UnusedResourceNote note(tweak);
  Hook changed;
  ParamRow row;
  withPlace(target.place(), [&] {
    const HookManager manager = hookArgument(std::move(tweak), target.hook);
    manager.updateHook([&](Hook& hook) {
      row = edit(hook, *manager.tweak);
      changed = hook;
    });
  });
  note.print();
  if (target.json) printJSON(row);
  return changed;
}

}  // namespace tavlen::cli
