#include "cli/arguments/CollectionArgument.h"

#include <exception>
#include <stdexcept>

#include "cli/arguments/StoredItem.h"
#include "tavlen/collections/TweakCollectionManifest.h"
#include "tavlen/store/TweakManager.h"

namespace tavlen::cli {

namespace {

bool isTweak(const std::string& id) {
  try {
    return std::dynamic_pointer_cast<TweakFile>(TweakManager::tweakWithID(id)) != nullptr;
  } catch (const std::exception&) {
    return false;
  }
}

}  // namespace

TweakCollection::Opened openedCollection(const std::string& text) {
  OpenedItem item = openedItem(text);
  if (auto* collection = std::get_if<TweakCollection::Opened>(&item)) return std::move(*collection);
  throw std::runtime_error(text + ": is a tweak, not a collection");
}

std::vector<std::string> missingMembers(const TweakCollection::Manifest& manifest) {
  std::vector<std::string> missing;
  for (const std::string& id : manifest._tweaks) {
    if (!isTweak(id)) missing.push_back(id);
  }
  return missing;
}

}  // namespace tavlen::cli
