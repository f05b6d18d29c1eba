#pragma once

#include <string>
#include <vector>

#include "tavlen/foundation/base/API.h"
#include "tavlen/store/OpenedItem.h"

namespace tavlen {

/// The stored items that a text names; see TweakManager::find(). There are several where a name is
/// taken more than once, or a beginning of an identifier fits several.
struct TAVLEN_API FoundItems {
  std::vector<OpenedItem> items;    ///< those that can be opened
  std::vector<std::string> broken;  ///< the identifiers of those that cannot
  /// If nothing was found: all names in the store.
  std::vector<std::string> names;
  /// If nothing was found: all identifiers in the store.
  std::vector<std::string> identifiers;
};

}  // namespace tavlen
