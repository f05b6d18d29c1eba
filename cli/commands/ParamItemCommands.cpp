#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <variant>
#include <vector>

#include "cli/arguments/ParameterAddress.h"
#include "cli/arguments/TypedValue.h"
#include "cli/arguments/UsageError.h"
#include "cli/commands/Commands.h"
#include "cli/commands/ParamArguments.h"
#include "cli/work/ResourceImport.h"
#include "cli/work/StoreLock.h"
#include "tavlen/editing/ArrayParameterManager.h"
#include "tavlen/tweaks/Hook.h"

namespace tavlen::cli {

namespace {

/// Lets `change` edit the items of an array, or the pairs of a dictionary.
template <class Change>
void updateItems(const ParameterManager& collection, Change change) {
  collection.updateParameter([&](Parameter& parameter) {
    if (auto* array = std::get_if<ArrayParameter>(&parameter)) return change(array->_items);
    if (auto* dictionary = std::get_if<DictionaryParameter>(&parameter))
      return change(dictionary->_items);
    throw ParameterError::typeMismatch(ArrayParameter::typeName, parameter);
  });
}

/// An iterator to `index` in `items`, which must be less than `count`.
template <class Items>
typename Items::iterator at(Items& items, std::int64_t index, std::size_t count) {
  if (index < 0 || static_cast<std::uint64_t>(index) >= count)
    throw ArrayParameterManager::Error::indexOutOfBounds(index);
  return items.begin() + static_cast<std::ptrdiff_t>(index);
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

Action insertAction(const InsertOptions& options) {
  const ItemAddress address = parseItemAddress(options.target.address);
  const TypedValue value = parseTypedValue(options.value.text, "VALUE");
  std::optional<TypedValue> key;
  if (options.key) key = parseTypedValue(*options.key, "--key");
  return [options, address, value, key] {
    editHook(options.target, [&](const HookManager& hook) {
      std::vector<TypedValue> values = {value};
      if (key) values.push_back(*key);
      std::vector<ResourceImport> imports =
          importResources(values, *hook.tweak, options.value.replaces);
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

void addInsert(Command group) {
  Command command = group.addCommand("insert", "Insert into an array or a dictionary");
  const auto options = std::make_shared<InsertOptions>();
  addParamTarget(command, options->target, "Where to insert: 2.0.value.3, or 2.0.value.end")
      .required();
  addParamValue(command, options->value);
  command.text("--key", options->key, "The key of a dictionary's new pair, written like VALUE")
      .typeName("VALUE");
  prepareEdit(command, options->target.tweak, [options] { return insertAction(*options); });
}

/// The item's index. Throws UsageError for "end", at which no item exists.
std::int64_t indexOf(const ItemAddress& address, const ParamTarget& target) {
  if (address.index) return *address.index;
  throw UsageError("ADDRESS", target.address + ": expected an index at its end");
}

void removeArgument(const HookManager& manager, std::int64_t argument) {
  manager.updateHook([&](Hook& hook) {
    if (hook._args.erase(argument) == 0) throw ParameterError::notFound(argument, manager.tweak);
  });
}

Action removeAction(const ParamTarget& target) {
  const ParameterAddress whole = parseParameterAddress(target.address);
  if (whole.steps.empty()) {
    return [target, whole] {
      editHook(target, [&](const HookManager& hook) { removeArgument(hook, whole.argument); });
      return 0;
    };
  }
  const ItemAddress address = parseItemAddress(target.address);
  const std::int64_t index = indexOf(address, target);
  return [target, address, index] {
    editHook(target, [&](const HookManager& hook) {
      updateItems(*managerAt(hook, address.collection),
                  [&](auto& items) { items.erase(at(items, index, items.size())); });
    });
    return 0;
  };
}

void addRemove(Command group) {
  Command command =
      group.addCommand("remove", "Remove an item or a pair, or stop replacing an argument");
  const auto target = std::make_shared<ParamTarget>();
  addParamTarget(command, *target, "The argument, the item or the pair: -1, 0.3").required();
  prepareEdit(command, target->tweak, [target] { return removeAction(*target); });
}

struct MoveOptions {
  ParamTarget target;
  std::string to;
};

Action moveAction(const MoveOptions& options) {
  const ItemAddress address = parseItemAddress(options.target.address);
  const std::int64_t from = indexOf(address, options.target);
  const std::int64_t to = parseIndex(options.to, "TO");
  return [options, address, from, to] {
    editHook(options.target, [&](const HookManager& hook) {
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

void addMove(Command group) {
  Command command = group.addCommand("move", "Move an item or a pair within its collection");
  const auto options = std::make_shared<MoveOptions>();
  addParamTarget(command, options->target, "The item or the pair: 0.3").required();
  command.text("TO", options->to, "Its new index").required();
  prepareEdit(command, options->target.tweak, [options] { return moveAction(*options); });
}

}  // namespace

void addParamItemCommands(Command group) {
  addInsert(group);
  addRemove(group);
  addMove(group);
}

}  // namespace tavlen::cli
