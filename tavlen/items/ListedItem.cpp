#include "tavlen/items/ListedItem.h"

#include "tavlen/foundation/text/NameSort.h"
#include "tavlen/items/TweakProtocol.h"

namespace tavlen {

void sortByName(std::vector<ListedItem>& items) {
  sortByLocalizedName(
      items, [](const ListedItem& item) -> const std::string& { return item.configuration.name(); },
      [](const ListedItem& left, const ListedItem& right) {
        return left.item->id() < right.item->id();
      });
}

}  // namespace tavlen
