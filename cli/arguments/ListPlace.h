#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

namespace tavlen::cli {

/// The help text of a new place in a list.
inline constexpr const char* kListPlaceHelp = "Its new index, from 0, or end";

/// A place in a list.
struct ListPlace {
  std::optional<std::int64_t> index;  ///< nothing for the end
};

/// Reads an index or "end". Throws UsageError, which names `argument`.
ListPlace parseListPlace(const std::string& text, const char* argument);

/// The index at which an item of a list of `count` stands after it was moved to `place`. Throws
/// std::runtime_error for an index that no item has.
std::size_t indexOf(const ListPlace& place, std::size_t count);

/// Moves the item at `from` to the index `to`; both must be indices of items. Items in between make
/// room.
template <class Items>
void moveItem(Items& items, std::size_t from, std::size_t to) {
  const auto at = [&](std::size_t index) {
    return items.begin() + static_cast<std::ptrdiff_t>(index);
  };
  if (from < to) {
    std::rotate(at(from), at(from + 1), at(to + 1));
  } else {
    std::rotate(at(to), at(from), at(from + 1));
  }
}

}  // namespace tavlen::cli
