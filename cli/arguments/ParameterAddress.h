#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string_view>
#include <vector>

#include "tavlen/editing/DictionaryParameterManager.h"
#include "tavlen/editing/HookManager.h"

namespace tavlen::cli {

/// The help text of an address.
inline constexpr const char* kAddressHelp =
    "The parameter's address: the argument from 0, or -1 for the result; then, separated by full "
    "stops, the index of an array's item, or of a dictionary's pair and key or value: 2.0.value.3";

/// The position of a parameter in a hook.
struct ParameterAddress {
  /// An item of an array, or one side of a dictionary's pair.
  struct Step {
    std::int64_t index = 0;                                        ///< of the item or the pair
    std::optional<DictionaryParameterManager::Accessor> accessor;  ///< only for a dictionary
  };

  std::int64_t argument = 0;  ///< an index as in Hook
  std::vector<Step> steps;    ///< from the argument inwards
};

/// The position of an item or a pair in an array or a dictionary.
struct ItemAddress {
  ParameterAddress collection;        ///< the array or dictionary
  std::optional<std::int64_t> index;  ///< nothing for "end", the position after the last item
};

/// Reads "2.0.value.3". Throws UsageError.
ParameterAddress parseParameterAddress(std::string_view text);
/// Reads the address of a collection, a full stop, and an index or "end". Throws
/// UsageError.
ItemAddress parseItemAddress(std::string_view text);
/// Reads a decimal index. Throws UsageError, which names `argument`.
std::int64_t parseIndex(std::string_view text, const char* argument);

/// The manager of the parameter at `address`. Reads nothing.
std::shared_ptr<const ParameterManager> managerAt(const HookManager& hook,
                                                  const ParameterAddress& address);

}  // namespace tavlen::cli
