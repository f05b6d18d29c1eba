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
#include "cli/commands/ParamArguments.h"
#include "cli/terminal/Console.h"
#include "cli/terminal/ShownText.h"
#include "cli/terminal/TextTable.h"
#include "cli/work/ResourceImport.h"
#include "cli/work/StoreLock.h"
#include "cli/work/TweakForReading.h"
#include "tavlen/foundation/text/EscapedText.h"
#include "tavlen/tweaks/Hook.h"

namespace tavlen::cli {

namespace {

/// Adds a row with address and value for every parameter that contains no others.
void addRows(TextTable& table, const std::string& address, const Parameter& parameter) {
  const auto* array = std::get_if<ArrayParameter>(&parameter);
  const auto* dictionary = std::get_if<DictionaryParameter>(&parameter);
  const std::size_t count = array != nullptr        ? array->_items.size()
                            : dictionary != nullptr ? dictionary->_items.size()
                                                    : 0;
  if (count == 0) table.addRow({address, typedText(parameter)});
  for (std::size_t i = 0; i < count; ++i) {
    const std::string item = address + "." + std::to_string(i);
    if (array != nullptr) {
      addRows(table, item, array->_items[i].value);
    } else {
      addRows(table, item + ".key", dictionary->_items[i].key());
      addRows(table, item + ".value", dictionary->_items[i].value());
    }
  }
}

std::string table(const Hook& hook) {
  TextTable table({"ADDRESS", "VALUE"}, TextTable::LastColumn::whole);
  for (const auto& [index, box] : hook._args) addRows(table, std::to_string(index), box.value);
  return table.text();
}

std::string shown(const Hook& hook, bool json) {
  if (json) return shownJSON(hook._args) + "\n";
  return hook._args.empty() ? "" : table(hook);
}

std::string shown(const Parameter& parameter, bool json) {
  return (json ? shownJSON(ParameterContainer{parameter})
               : escapedForTerminal(typedText(parameter))) +
         "\n";
}

struct GetOptions {
  ParamTarget target;
  bool json = false;
};

Action getAction(const GetOptions& options) {
  std::optional<ParameterAddress> address;
  if (!options.target.address.empty()) address = parseParameterAddress(options.target.address);
  return [options, address] {
    const OpenedTweak tweak = tweakForReading(options.target.tweak);
    printData(withPlace(options.target.place(), [&] {
      const HookManager hook = hookArgument(tweak.opened(), options.target.hook);
      return address ? shown(managerAt(hook, *address)->parameter(), options.json)
                     : shown(hook.hook(), options.json);
    }));
    return 0;
  };
}

void addGet(Command group) {
  Command command = group.addCommand("get", "Print a parameter, or all parameters of the hook");
  const auto options = std::make_shared<GetOptions>();
  addParamTarget(command, options->target);
  command.flag("--json", options->json, "Print JSON in the form of the manifest");
  command.prepare([options] { return getAction(*options); });
}

struct SetOptions {
  ParamTarget target;
  ParamValue value;
};

Action setAction(const SetOptions& options) {
  const ParameterAddress address = parseParameterAddress(options.target.address);
  const TypedValue value = parseTypedValue(options.value.text, "VALUE");
  return [options, address, value] {
    editHook(options.target, [&](const HookManager& hook) {
      const auto manager = managerAt(hook, address);
      std::vector<ResourceImport> imports =
          importResources({&value, 1}, *hook.tweak, options.value.replaces);
      // Check a nested address first, so that a wrong one leaves no file in the resources. Store
      // the file before the parameter, so that the manifest never names a missing file.
      if (!imports.empty() && !address.steps.empty()) manager->parameter();
      for (ResourceImport& file : imports) file.commit();
      manager->setParameter(value.parameter);
    });
    return 0;
  };
}

void addSet(Command group) {
  Command command = group.addCommand("set", "Replace a parameter, or add one for an argument");
  const auto options = std::make_shared<SetOptions>();
  addParamTarget(command, options->target).required();
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
