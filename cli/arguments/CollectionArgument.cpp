#include "cli/arguments/CollectionArgument.h"

#include <set>
#include <stdexcept>

#include "cli/arguments/StoredItem.h"
#include "tavlen/collections/TweakCollectionManifest.h"

namespace tavlen::cli {

TweakCollection::Opened openedCollection(const std::string& text) {
  OpenedItem item = openedItem(text);
  if (auto* collection = std::get_if<TweakCollection::Opened>(&item)) return std::move(*collection);
  throw std::runtime_error(text + ": is a tweak, not a collection");
}

std::vector<std::string> missingMembers(const TweakCollection::Manifest& manifest,
                                        const std::vector<TweakFile::Opened>& opened) {
  std::set<std::string> known;
  for (const TweakFile::Opened& tweak : opened) known.insert(tweak.file->id());
  std::vector<std::string> missing;
  for (const std::string& id : manifest._tweaks) {
    if (known.insert(id).second) missing.push_back(id);
  }
  return missing;
}

}  // namespace tavlen::cli
