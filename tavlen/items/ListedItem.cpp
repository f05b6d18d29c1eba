#include "tavlen/items/ListedItem.h"

#include <algorithm>
#include <string>
#include <utility>

#include "tavlen/foundation/text/TextComparison.h"
#include "tavlen/items/TweakProtocol.h"

namespace tavlen {

void sortByName(std::vector<ListedItem>& items) {
  struct Row {
    std::string key;
    ListedItem* item;
  };
  std::vector<Row> rows;
  rows.reserve(items.size());
  for (ListedItem& item : items)
    rows.push_back({localizedCaseInsensitiveKey(item.configuration.name()), &item});
  std::sort(rows.begin(), rows.end(), [](const Row& left, const Row& right) {
    const int order = left.key.compare(right.key);
    return order == 0 ? left.item->item->id() < right.item->item->id() : order < 0;
  });
  std::vector<ListedItem> sorted;
  sorted.reserve(items.size());
  for (const Row& row : rows) sorted.push_back(std::move(*row.item));
  items = std::move(sorted);
}

}  // namespace tavlen
