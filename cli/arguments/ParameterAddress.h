#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "tavlen/tweaks/Hook.h"

namespace tavlen::cli {

/// The help text of an address.
inline constexpr const char* kAddressHelp =
    "The parameter's address: the argument from 0, or -1 for the result; then, separated by full "
    "stops, the index of an array's item, the key of a dictionary's pair, or the pair's index and "
    "key or value: 2.tags.0, 2.0.value.3, -1[\"a.b\"]";

/// The position of a parameter in a hook.
struct ParameterAddress {
  /// A side of a dictionary's pair.
  enum class Side { key, value };
  /// An item of an array, or one side of a dictionary's pair.
  struct Step {
    std::variant<std::int64_t, std::string> place;  ///< an index, or the text of a pair's key
    std::optional<Side> side;                       ///< only after a pair's index
    std::size_t end = 0;                            ///< where the step ends in the text
  };

  std::int64_t argument = 0;  ///< an index as in Hook
  std::size_t end = 0;        ///< where the argument ends in the text
  std::vector<Step> steps;    ///< from the argument inwards
  std::string text;           ///< as the user wrote it, perhaps with more after it

  /// What the user wrote for it.
  std::string shown() const { return text.substr(0, steps.empty() ? end : steps.back().end); }
};

/// The position of an item or a pair in an array or a dictionary.
struct ItemAddress {
  ParameterAddress collection;                 ///< the array or dictionary
  std::optional<ParameterAddress::Step> item;  ///< nothing for "end", after the last item
};

/// Reads "2.tags.3". A part in brackets is a key, as a JSON string: it may then be a number or one
/// of the words "key", "value" and "end". Throws UsageError.
ParameterAddress parseParameterAddress(std::string_view text);
/// Reads the address of a collection with that of an item or a pair, or ".end". Throws UsageError.
ItemAddress parseItemAddress(std::string_view text);

/// The parameter at `address`. Throws std::runtime_error, which names the part of the address at
/// fault.
const Parameter& parameterAt(const Hook& hook, const ParameterAddress& address);
/// The same for changing it.
Parameter& parameterAt(Hook& hook, const ParameterAddress& address);

/// The index of the item or pair in its collection; the number of items for "end". `most` is the
/// greatest index that is allowed after the last item's: 0, or 1 for a place to insert at. Throws
/// std::runtime_error, also for a parameter that is no collection.
std::size_t indexOfItem(const Parameter& collection, const ItemAddress& address, std::size_t most);

/// The addresses of the values in the dictionary at the address `place`, in their order: by their
/// keys, except where a key is no text or is repeated; there by the index of the pair.
std::vector<std::string> addressesOfValues(const DictionaryParameter& dictionary,
                                           const std::string& place);

}  // namespace tavlen::cli
