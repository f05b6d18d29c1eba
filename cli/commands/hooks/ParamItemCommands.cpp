#include <cstddef>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <utility>
#include <variant>
#include <vector>

#include "cli/arguments/ListPlace.h"
#include "cli/arguments/ParameterAddress.h"
#include "cli/arguments/TypedValue.h"
#include "cli/arguments/UsageError.h"
#include "cli/commands/Commands.h"
#include "cli/commands/hooks/ParamArguments.h"
#include "cli/items/StoreLock.h"
#include "cli/tweaks/HookOutput.h"
#include "cli/tweaks/ResourceImport.h"
#include "tavlen/tweaks/Hook.h"

namespace tavlen::cli {

namespace {

/// Returns what `edit` returns for the items of an array, or the pairs of a dictionary, at
/// `address`.
template <class Edit>
ParamRow editItems(Hook& hook, const ItemAddress& address, std::size_t most, Edit edit) {
  Parameter& collection = parameterAt(hook, address.collection);
  const std::size_t index = indexOfItem(collection, address, most);
  if (auto* array = std::get_if<ArrayParameter>(&collection)) return edit(array->_items, index);
  return edit(std::get<DictionaryParameter>(collection)._items, index);
}

template <class Items>
typename Items::iterator at(Items& items, std::size_t index) {
  return items.begin() + static_cast<std::ptrdiff_t>(index);
}

std::string addressOf(const ItemAddress& address, std::size_t index) {
  return address.collection.shown() + "." + std::to_string(index);
}

/// A new item or pair for `items`, made from the user's values.
template <class Items>
typename Items::value_type newItem(const Items& /*items*/, const std::optional<TypedValue>& key,
                                   const TypedValue& value) {
  if constexpr (std::is_same_v<typename Items::value_type, DictionaryParameter::Pair>) {
    if (!key) throw std::runtime_error("--key is required when adding to a dictionary");
    return DictionaryParameter::Pair::with(key->parameter, value.parameter);
  } else {
    if (key) throw std::runtime_error("--key is for dictionaries only");
    return {value.parameter};
  }
}

struct InsertOptions {
  ParamTarget target;
  ParamValue value;
  std::optional<std::string> key;
};

ParamRow rowOf(std::string address, const std::optional<TypedValue>& key, const TypedValue& value) {
  ParamRow row = {std::move(address), std::nullopt, ParameterContainer{value.parameter}};
  if (key) row.key = ParameterContainer{key->parameter};
  return row;
}

Action insertAction(const InsertOptions& options) {
  const ItemAddress address = parseItemAddress(options.target.address);
  const TypedValue value = parseTypedValue(options.value.text, "VALUE");
  std::optional<TypedValue> key;
  if (options.key) key = parseTypedValue(*options.key, "--key");
  return [options, address, value, key] {
    const Hook changed = editHook(options.target, [&](Hook& hook, const TweakFile& tweak) {
      return editItems(hook, address, 1, [&](auto& items, std::size_t index) {
        auto item = newItem(items, key, value);
        std::vector<TypedValue> values = {value};
        if (key) values.push_back(*key);
        for (ResourceImport& file : startImports(values, tweak, options.value.replaces))
          file.commit();
        items.insert(at(items, index), std::move(item));
        return rowOf(addressOf(address, index), key, value);
      });
    });
    warnOfProblems(options.target.tweak, changed, address.collection.argument);
    return 0;
  };
}

void addInsert(Command group) {
  Command command = group.addCommand("insert", "Insert into an array or a dictionary");
  const auto options = std::make_shared<InsertOptions>();
  addEditedParam(command, options->target, "Where to insert: 2.tags.3, or 2.tags.end");
  addParamValue(command, options->value);
  command.text("--key", options->key, "The key of a dictionary's new pair, written like VALUE")
      .typeName("VALUE");
  prepareEdit(command, options->target.tweak, [options] { return insertAction(*options); });
}

Action removeAction(const ParamTarget& target) {
  const ParameterAddress whole = parseParameterAddress(target.address);
  if (whole.steps.empty()) {
    return [target, whole] {
      editHook(target, [&](Hook& hook, const TweakFile& /*tweak*/) {
        parameterAt(hook, whole);
        hook._args.erase(whole.argument);
        return ParamRow{whole.text, std::nullopt, std::nullopt};
      });
      return 0;
    };
  }
  const ItemAddress address = parseItemAddress(target.address);
  return [target, address] {
    editHook(target, [&](Hook& hook, const TweakFile& /*tweak*/) {
      return editItems(hook, address, 0, [&](auto& items, std::size_t index) {
        items.erase(at(items, index));
        return ParamRow{addressOf(address, index), std::nullopt, std::nullopt};
      });
    });
    return 0;
  };
}

void addRemove(Command group) {
  Command command =
      group.addCommand("remove", "Remove an item or a pair, or stop replacing an argument");
  const auto target = std::make_shared<ParamTarget>();
  addEditedParam(command, *target, "The argument, the item or the pair: -1, 0.3, 0.tags");
  prepareEdit(command, target->tweak, [target] { return removeAction(*target); });
}

struct MoveOptions {
  ParamTarget target;
  std::string to;
};

Action moveAction(const MoveOptions& options) {
  const ItemAddress address = parseItemAddress(options.target.address);
  if (!address.item)
    throw UsageError("ADDRESS", options.target.address + ": expected an index or a key at its end");
  const ListPlace to = parseListPlace(options.to, "TO");
  return [options, address, to] {
    editHook(options.target, [&](Hook& hook, const TweakFile& /*tweak*/) {
      return editItems(hook, address, 0, [&](auto& items, std::size_t from) {
        const std::size_t place = indexOf(to, items.size());
        moveItem(items, from, place);
        return ParamRow{addressOf(address, place), std::nullopt, std::nullopt};
      });
    });
    return 0;
  };
}

void addMove(Command group) {
  Command command = group.addCommand("move", "Move an item or a pair within its collection");
  const auto options = std::make_shared<MoveOptions>();
  addEditedParam(command, options->target, "The item or the pair: 0.3, 0.tags");
  command.text("TO", options->to, kListPlaceHelp).required();
  prepareEdit(command, options->target.tweak, [options] { return moveAction(*options); });
}

}  // namespace

void addParamItemCommands(Command group) {
  addInsert(group);
  addRemove(group);
  addMove(group);
}

}  // namespace tavlen::cli
