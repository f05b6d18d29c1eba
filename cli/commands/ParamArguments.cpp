#include "cli/commands/ParamArguments.h"

#include <utility>

#include "cli/arguments/HookArgument.h"
#include "cli/arguments/StoredItem.h"
#include "cli/arguments/TypedValue.h"
#include "cli/arguments/WithPlace.h"
#include "cli/work/TweakResources.h"

namespace tavlen::cli {

std::string ParamTarget::place() const {
  return tweak + ": " + hook + (address.empty() ? "" : ": " + address);
}

Option addParamTarget(Command command, ParamTarget& target, const char* addressHelp) {
  command.text("TWEAK", target.tweak, kTweakHelp).required().notEmpty();
  addHookArgument(command, target.hook);
  return command.text("ADDRESS", target.address, addressHelp).notEmpty();
}

void addParamValue(Command command, ParamValue& value) {
  command.text("VALUE", value.text, kValueHelp).required();
  command.flag("--replace", value.replaces,
               "Let the file replace a different resource of the same name");
}

void editHook(const ParamTarget& target, FunctionRef<void(const HookManager&)> edit) {
  TweakFile::Opened tweak = openedTweak(target.tweak);
  const UnusedResourceNote note(tweak);
  withPlace(target.place(), [&] { edit(hookArgument(std::move(tweak), target.hook)); });
  note.print();
}

}  // namespace tavlen::cli
