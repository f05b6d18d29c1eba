#pragma once

#include <concepts>
#include <utility>
#include <vector>

namespace tavlen {

/// A parameter that holds other parameters, as a list of items of its own type.
template <class Kind>
concept CollectionParameter = requires(Kind kind, std::vector<typename Kind::Item> items) {
  { Kind::withItems(std::move(items)) } -> std::same_as<Kind>;
  { kind.items() } -> std::convertible_to<std::vector<typename Kind::Item>>;
  kind.setItems(std::move(items));
};

}  // namespace tavlen
