#pragma once

#include <memory>
#include <vector>

#include "tavlen/items/TweakConfiguration.h"

namespace tavlen {

class TweakProtocol;

/// A stored item, and the settings that its document held when it was opened.
struct ListedItem {
  std::shared_ptr<TweakProtocol> item;  ///< never null
  TweakConfiguration configuration;
};

/// Sorts as TweakProtocol::compareTo() orders items, those of equal names by their identifiers,
/// without reading anything. Threads: any.
void sortByName(std::vector<ListedItem>& items);

}  // namespace tavlen
