#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string_view>
#include <vector>

#include "tavlen/editing/DictionaryParameterManager.h"
#include "tavlen/editing/HookManager.h"

namespace tavlen::cli {

inline constexpr const char* kAddressHelp =
    "Where the parameter stands: the argument from 0, or -1 for the result; then, behind full "
    "stops, the index of an array's item, or of a dictionary's pair and key or value: 2.0.value.3";

/// Where in a hook a parameter stands.
struct ParameterAddress {
  /// An item of an array, or a side of a dictionary's pair.
  struct Step {
    std::int64_t index = 0;
    std::optional<DictionaryParameterManager::Accessor> accessor;
  };

  std::int64_t argument = 0;
  std::vector<Step> steps;
};

/// Where in a collection an item or a pair stands.
struct ItemAddress {
  ParameterAddress collection;
  /// None for the place behind the last.
  std::optional<std::int64_t> index;
};

/// Reads "2.0.value.3". Throws UsageError.
ParameterAddress parseParameterAddress(std::string_view text);
/// Reads the address of a collection, a full stop, and an index or "end". Throws
/// UsageError.
ItemAddress parseItemAddress(std::string_view text);
/// A decimal index; `argument` is what errors call it. Throws UsageError.
std::int64_t parseIndex(std::string_view text, const char* argument);

/// The chain of managers that leads to `address`.
std::shared_ptr<const ParameterManager> managerAt(const HookManager& hook,
                                                  const ParameterAddress& address);

}  // namespace tavlen::cli
