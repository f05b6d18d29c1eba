#include <algorithm>
#include <filesystem>
#include <functional>
#include <iterator>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <utility>
#include <variant>
#include <vector>

#include "cli/arguments/HookArgument.h"
#include "cli/arguments/ParameterAddress.h"
#include "cli/arguments/StoredItem.h"
#include "cli/arguments/TypedValue.h"
#include "cli/arguments/UsageError.h"
#include "cli/arguments/WithPlace.h"
#include "cli/commands/Commands.h"
#include "cli/terminal/Console.h"
#include "cli/terminal/TextTable.h"
#include "cli/work/ResourceImport.h"
#include "tavlen/editing/ArrayParameterManager.h"
#include "tavlen/foundation/files/FileSystem.h"
#include "tavlen/foundation/image/Image.h"
#include "tavlen/foundation/json/JSONEncoder.h"
#include "tavlen/foundation/text/EscapedText.h"
#include "tavlen/items/TweakPoster.h"
#include "tavlen/tweaks/Hook.h"

namespace tavlen::cli {

namespace {

struct Options {
  std::string tweak;
  std::string hook;
  std::string address;
  std::string value;
  std::optional<std::string> key;
  std::string to;
  bool replaces = false;
  bool json = false;

  std::string place() const {
    return tweak + ": " + hook + (address.empty() ? "" : ": " + address);
  }
};

/// Runs `edit` on the hook that the options name, as one step. Errors name the place.
void editHook(const Options& options, const std::function<void(const HookManager&)>& edit) {
  const std::lock_guard lock(tweakPoster().recursiveLock);
  TweakFile::Opened tweak = openedTweak(options.tweak);
  withPlace(options.place(), [&] { edit(hookArgument(std::move(tweak), options.hook)); });
}

/// A row a value that holds no others, with the address that leads to it.
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
  if (json) return encodeJSON(hook._args) + "\n";
  return hook._args.empty() ? "" : table(hook);
}

std::string shown(const Parameter& parameter, bool json) {
  return (json ? encodeJSON(ParameterContainer{parameter})
               : escapedForTerminal(typedText(parameter))) +
         "\n";
}

Action getAction(const Options& options) {
  std::optional<ParameterAddress> address;
  if (!options.address.empty()) address = parseParameterAddress(options.address);
  return [options, address] {
    TweakFile::Opened tweak = openedTweak(options.tweak);
    printData(withPlace(options.place(), [&] {
      const HookManager hook = hookArgument(std::move(tweak), options.hook);
      return address ? shown(managerAt(hook, *address)->parameter(), options.json)
                     : shown(hook.hook(), options.json);
    }));
    return 0;
  };
}

/// Two files of one name would take the same place.
void checkNames(const std::vector<TypedValue>& values) {
  std::map<std::filesystem::path, std::string> files;
  for (const TypedValue& value : values) {
    if (value.file.empty()) continue;
    const std::filesystem::path name = std::filesystem::path(value.file).filename();
    const auto [other, isNew] = files.try_emplace(name, value.file);
    if (!isNew && readFile(other->second) != readFile(value.file)) {
      throw std::runtime_error(other->second + " and " + value.file + ": would both be stored as " +
                               name.string());
    }
  }
}

void warnOfNoImage(const TypedValue& value) {
  if (value.file.empty() || !std::holds_alternative<ImageParameter>(value.parameter)) return;
  if (!Image::decode(readFile(value.file))) {
    printWarning(value.file + ": is no PNG or JPEG image");
  }
}

/// The files of `values` on their way into the tweak's resources.
std::vector<ResourceImport> importsOf(const std::vector<TypedValue>& values, const TweakFile& tweak,
                                      bool replaces) {
  checkNames(values);
  std::vector<ResourceImport> imports;
  for (const TypedValue& value : values) {
    warnOfNoImage(value);
    if (!value.file.empty()) imports.emplace_back(tweak, value.file, replaces);
  }
  return imports;
}

Action setAction(const Options& options) {
  const ParameterAddress address = parseParameterAddress(options.address);
  const TypedValue value = parseTypedValue(options.value, "VALUE");
  return [options, address, value] {
    editHook(options, [&](const HookManager& hook) {
      const auto manager = managerAt(hook, address);
      std::vector<ResourceImport> imports = importsOf({value}, *hook.tweak, options.replaces);
      // A wrong address must leave no file behind, and a manifest must not name one that is not
      // there yet.
      if (!imports.empty() && !address.steps.empty()) manager->parameter();
      for (ResourceImport& file : imports) file.commit();
      manager->setParameter(value.parameter);
    });
    return 0;
  };
}

/// Lets `change` edit the list of items, or of pairs, of the array or dictionary.
template <class Change>
void updateItems(const ParameterManager& collection, Change change) {
  collection.updateParameter([&](Parameter& parameter) {
    if (auto* array = std::get_if<ArrayParameter>(&parameter)) return change(array->_items);
    if (auto* dictionary = std::get_if<DictionaryParameter>(&parameter))
      return change(dictionary->_items);
    throw ParameterError::typeMismatch(ArrayParameter::typeName, parameter);
  });
}

/// The place `index`, which must be one of the first `count`, in `items`.
template <class Items>
typename Items::iterator at(Items& items, std::int64_t index, std::size_t count) {
  if (index < 0 || static_cast<std::uint64_t>(index) >= count)
    throw ArrayParameterManager::Error::indexOutOfBounds(index);
  return items.begin() + static_cast<std::ptrdiff_t>(index);
}

/// The new item or pair of `items`, of the values that the user gave.
template <class Items>
typename Items::value_type newItem(const Items& /*items*/, const std::optional<TypedValue>& key,
                                   const TypedValue& value) {
  if constexpr (std::is_same_v<typename Items::value_type, DictionaryParameter::Pair>) {
    if (!key) throw std::runtime_error("a dictionary's pair needs a key; --key gives it");
    return DictionaryParameter::Pair::with(key->parameter, value.parameter);
  } else {
    if (key) throw std::runtime_error("an array's item has no key");
    return {value.parameter};
  }
}

Action insertAction(const Options& options) {
  const ItemAddress address = parseItemAddress(options.address);
  const TypedValue value = parseTypedValue(options.value, "VALUE");
  std::optional<TypedValue> key;
  if (options.key) key = parseTypedValue(*options.key, "--key");
  return [options, address, value, key] {
    editHook(options, [&](const HookManager& hook) {
      std::vector<TypedValue> values = {value};
      if (key) values.push_back(*key);
      std::vector<ResourceImport> imports = importsOf(values, *hook.tweak, options.replaces);
      updateItems(*managerAt(hook, address.collection), [&](auto& items) {
        const auto place =
            address.index ? at(items, *address.index, items.size() + 1) : items.end();
        items.insert(place, newItem(items, key, value));
        for (ResourceImport& file : imports) file.commit();
      });
    });
    return 0;
  };
}

void removeArgument(const HookManager& manager, std::int64_t argument) {
  manager.updateHook([&](Hook& hook) {
    if (hook._args.erase(argument) == 0) throw ParameterError::notFound(argument, manager.tweak);
  });
}

/// The item's index; the place behind the last is none.
std::int64_t indexOf(const ItemAddress& address, const Options& options) {
  if (address.index) return *address.index;
  throw UsageError("ADDRESS",
                   escapedForTerminal(options.address) + ": expected an index at its end");
}

Action removeAction(const Options& options) {
  const ParameterAddress whole = parseParameterAddress(options.address);
  if (whole.steps.empty()) {
    return [options, whole] {
      editHook(options, [&](const HookManager& hook) { removeArgument(hook, whole.argument); });
      return 0;
    };
  }
  const ItemAddress address = parseItemAddress(options.address);
  const std::int64_t index = indexOf(address, options);
  return [options, address, index] {
    editHook(options, [&](const HookManager& hook) {
      updateItems(*managerAt(hook, address.collection),
                  [&](auto& items) { items.erase(at(items, index, items.size())); });
    });
    return 0;
  };
}

Action moveAction(const Options& options) {
  const ItemAddress address = parseItemAddress(options.address);
  const std::int64_t from = indexOf(address, options);
  const std::int64_t to = parseIndex(options.to, "TO");
  return [options, address, from, to] {
    editHook(options, [&](const HookManager& hook) {
      updateItems(*managerAt(hook, address.collection), [&](auto& items) {
        const auto item = at(items, from, items.size());
        const auto place = at(items, to, items.size());
        if (item < place) {
          std::rotate(item, item + 1, place + 1);
        } else {
          std::rotate(place, item, item + 1);
        }
      });
    });
    return 0;
  };
}

/// A subcommand of `param`, with the options that all have. `make` judges the arguments, so that
/// malformed ones are wrong usage, and gives what is to be done.
Command addTo(Command group, const char* name, const char* help,
              const std::shared_ptr<Options>& options, Action (*make)(const Options&)) {
  Command command = group.addCommand(name, help);
  command.text("TWEAK", options->tweak, kTweakHelp).required().notEmpty();
  addHookArgument(command, options->hook);
  command.prepare([options, make] { return make(*options); });
  return command;
}

Option addAddress(Command command, const std::shared_ptr<Options>& options,
                  const char* help = kAddressHelp) {
  return command.text("ADDRESS", options->address, help).notEmpty();
}

void addValue(Command command, const std::shared_ptr<Options>& options) {
  command.text("VALUE", options->value, kValueHelp).required();
  command.flag("--replace", options->replaces,
               "Let the file replace a resource of its name that differs");
}

void addEdits(Command group) {
  auto options = std::make_shared<Options>();
  Command set =
      addTo(group, "set", "Replace a parameter, or add an argument's", options, setAction);
  addAddress(set, options).required();
  addValue(set, options);

  options = std::make_shared<Options>();
  Command insert =
      addTo(group, "insert", "Insert into an array or a dictionary", options, insertAction);
  addAddress(insert, options, "Where the new one is to stand: 2.0.value.3, or 2.0.value.end")
      .required();
  addValue(insert, options);
  insert.text("--key", options->key, "The key of a dictionary's new pair, written as VALUE")
      .typeName("VALUE");

  options = std::make_shared<Options>();
  Command remove = addTo(group, "remove", "Remove an item or a pair, or leave an argument as it is",
                         options, removeAction);
  addAddress(remove, options, "The argument, the item or the pair: -1, 0.3").required();

  options = std::make_shared<Options>();
  Command move =
      addTo(group, "move", "Move an item or a pair within its collection", options, moveAction);
  addAddress(move, options, "The item or the pair: 0.3").required();
  move.text("TO", options->to, "The index that it is to have then").required();
}

}  // namespace

void addParamCommand(Command app) {
  Command group = app.addCommand("param", "Show and edit the parameters of a hook");
  group.requireCommand();
  const auto options = std::make_shared<Options>();
  Command get = addTo(group, "get", "Print a parameter, or all of the hook", options, getAction);
  addAddress(get, options);
  get.flag("--json", options->json, "Print JSON, as the manifest holds it");
  addEdits(group);
}

}  // namespace tavlen::cli
