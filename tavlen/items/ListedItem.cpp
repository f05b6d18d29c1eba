#include "tavlen/items/ListedItem.h"

#include <algorithm>
#include <compare>

#include "tavlen/foundation/text/TextComparison.h"
#include "tavlen/items/TweakProtocol.h"

namespace tavlen {

void sortByName(std::vector<ListedItem>& items) {
  std::sort(items.begin(), items.end(), [](const ListedItem& left, const ListedItem& right) {
    const std::weak_ordering order =
        localizedCaseInsensitiveCompare(left.configuration.name(), right.configuration.name());
    return std::is_eq(order) ? left.item->id() < right.item->id() : std::is_lt(order);
  });
}

}  // namespace tavlen
