#pragma once

#include <memory>
#include <vector>

#include "tavlen/foundation/base/API.h"
#include "tavlen/items/TweakConfiguration.h"

namespace tavlen {

class TweakProtocol;

/// A stored item with its settings, as they were when its document was read.
struct TAVLEN_API ListedItem {
  std::shared_ptr<TweakProtocol> item;  ///< never null
  TweakConfiguration configuration;     ///< as read; later edits do not change it
};

/// Sorts by name in the order of TweakProtocol::compareTo(), and items of equal names by their
/// identifiers. Reads no document. Threads: any.
TAVLEN_API void sortByName(std::vector<ListedItem>& items);

}  // namespace tavlen
