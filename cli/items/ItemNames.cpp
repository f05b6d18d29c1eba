#include "cli/items/ItemNames.h"

#include <stdexcept>

#include "cli/arguments/StoredItem.h"
#include "cli/items/ItemRow.h"
#include "cli/terminal/Console.h"
#include "tavlen/collections/TweakCollectionManifest.h"
#include "tavlen/items/TweakPoster.h"
#include "tavlen/store/TweakManager.h"
#include "tavlen/tweaks/Manifest.h"

namespace tavlen::cli {

ItemNames::ItemNames(std::string_view except) {
  for (const auto& [item, configuration] : TweakManager::listedTweaks()) {
    if (item->id() != except) owners_.emplace(configuration.name(), item->id());
  }
}

void ItemNames::requireFree(const std::string& name) const {
  if (isItemPath(name)) {
    printWarning(name + ": commands take this name for a path; use the identifier instead");
  }
  const auto owner = owners_.find(name);
  if (owner == owners_.end()) return;
  throw std::runtime_error(name + ": the item " + owner->second + " has this name already");
}

std::string ItemNames::take(const std::string& name) {
  std::string free = name;
  for (int number = 2; !owners_.try_emplace(free).second; ++number) {
    free = name + " " + std::to_string(number);
  }
  if (free != name) printNote(name + ": the name is taken; the new item is called " + free);
  return free;
}

void ItemNames::takeFor(TweakProtocol& item) {
  const std::string name = item.genericConfiguration().name();
  const std::string free = take(name);
  if (free == name) return;
  const auto rename = [&](auto& manifest) { manifest.configuration.name = free; };
  tweakPoster().performWithoutNotifications([&] {
    if (auto* tweak = dynamic_cast<TweakFile*>(&item)) tweak->updateManifest(rename);
    if (auto* many = dynamic_cast<TweakCollection*>(&item)) many->updateManifest(rename);
  });
}

void requireNameFor(const OpenedItem& opened, const std::string& name) {
  const TweakProtocol& item = *opened.item();
  if (opened.configuration().name() == name || !isInStore(item)) return;
  ItemNames(item.id()).requireFree(name);
}

}  // namespace tavlen::cli
