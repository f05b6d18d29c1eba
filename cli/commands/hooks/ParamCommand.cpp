#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <variant>
#include <vector>

#include "cli/arguments/HookArgument.h"
#include "cli/arguments/ParameterAddress.h"
#include "cli/arguments/StoredItem.h"
#include "cli/arguments/TypedValue.h"
#include "cli/arguments/WithPlace.h"
#include "cli/commands/Commands.h"
#include "cli/commands/hooks/ParamArguments.h"
#include "cli/items/StoreLock.h"
#include "cli/terminal/Console.h"
#include "cli/terminal/ShownText.h"
#include "cli/terminal/TextTable.h"
#include "cli/tweaks/HookOutput.h"
#include "cli/tweaks/ResourceImport.h"
#include "cli/tweaks/TweakForReading.h"
#include "tavlen/tweaks/Hook.h"

namespace tavlen::cli {

namespace {

void addRows(TextTable& table, const std::string& address, const Parameter& parameter);

void addRowsOfPairs(TextTable& table, const std::string& address,
                    const DictionaryParameter& dictionary) {
  const std::vector<std::string> values = addressesOfValues(dictionary, address);
  for (std::size_t i = 0; i < values.size(); ++i) {
    // An address with the key says the key, too.
    const std::string pair = address + "." + std::to_string(i);
    if (values[i] == pair + ".value") addRows(table, pair + ".key", dictionary._items[i].key());
    addRows(table, values[i], dictionary._items[i].value());
  }
}

/// Adds a row with address and value for every parameter that contains no others.
void addRows(TextTable& table, const std::string& address, const Parameter& parameter) {
  const auto* array = std::get_if<ArrayParameter>(&parameter);
  const auto* dictionary = std::get_if<DictionaryParameter>(&parameter);
  if (dictionary != nullptr && !dictionary->_items.empty()) {
    addRowsOfPairs(table, address, *dictionary);
  } else if (array != nullptr && !array->_items.empty()) {
    for (std::size_t i = 0; i < array->_items.size(); ++i)
      addRows(table, address + "." + std::to_string(i), array->_items[i].value);
  } else {
    table.addRow({address, typedText(parameter)});
  }
}

std::string table(const Hook& hook) {
  TextTable table({"ADDRESS", "VALUE"});
  table.keepWhole();
  for (const auto& [index, box] : hook._args) addRows(table, std::to_string(index), box.value);
  return table.text();
}

std::string shown(const Hook& hook, bool json) {
  if (json) return shownJSON(hook._args) + "\n";
  return hook._args.empty() ? "" : table(hook);
}

std::string shown(const Parameter& parameter, bool json) {
  return (json ? shownJSON(ParameterContainer{parameter}) : typedText(parameter)) + "\n";
}

Action getAction(const ParamTarget& target) {
  std::optional<ParameterAddress> address;
  if (!target.address.empty()) address = parseParameterAddress(target.address);
  return [target, address] {
    const OpenedTweak tweak = tweakForReading(target.tweak);
    printData(withPlace(target.place(), [&] {
      const Hook hook = hookArgument(tweak.opened(), target.hook).hook();
      if (address) {
        const Parameter& parameter = parameterAt(hook, *address);
        warnOfMissingResources(target, tweak, parameter);
        return shown(parameter, target.json);
      }
      for (const auto& entry : hook._args)
        warnOfMissingResources(target, tweak, entry.second.value);
      return shown(hook, target.json);
    }));
    return 0;
  };
}

void addGet(Command group) {
  Command command = group.addCommand("get", "Print a parameter, or all parameters of the hook");
  const auto target = std::make_shared<ParamTarget>();
  addParamTarget(command, *target, kAddressHelp, kReadTweakHelp);
  command.flag("--json", target->json, "Print JSON in the form of the manifest");
  command.prepare([target] { return getAction(*target); });
}

struct SetOptions {
  ParamTarget target;
  ParamValue value;
};

Action setAction(const SetOptions& options) {
  const ParameterAddress address = parseParameterAddress(options.target.address);
  const TypedValue value = parseTypedValue(options.value.text, "VALUE");
  return [options, address, value] {
    const Hook changed = editHook(options.target, [&](Hook& hook, const TweakFile& tweak) {
      Parameter& parameter =
          address.steps.empty() ? hook._args[address.argument].value : parameterAt(hook, address);
      // Store the file before the parameter, so that the manifest never names a missing file.
      for (ResourceImport& file : startImports({value}, tweak, options.value.replaces))
        file.commit();
      parameter = value.parameter;
      return ParamRow{address.text, std::nullopt, ParameterContainer{value.parameter}};
    });
    warnOfProblems(options.target.tweak, changed, address.argument);
    return 0;
  };
}

void addSet(Command group) {
  Command command = group.addCommand("set", "Replace a parameter, or add one for an argument");
  const auto options = std::make_shared<SetOptions>();
  addEditedParam(command, options->target);
  addParamValue(command, options->value);
  prepareEdit(command, options->target.tweak, [options] { return setAction(*options); });
}

}  // namespace

void addParamCommand(Command app) {
  Command group = app.addCommand("param", "Show and edit the parameters of a hook");
  group.requireCommand();
  addGet(group);
  addSet(group);
  addParamItemCommands(group);
}

}  // namespace tavlen::cli
