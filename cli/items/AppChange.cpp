#include "cli/items/AppChange.h"

#include <algorithm>
#include <memory>

#include "cli/arguments/AppArgument.h"
#include "cli/items/ActiveTweak.h"
#include "cli/terminal/ShownText.h"
#include "tavlen/store/TweakManager.h"

namespace tavlen::cli {

void takeAway(const OpenedItem& item, const std::string& next) {
  const TweakConfiguration configuration = item.configuration();
  const std::string& former = configuration.bundleID();
  if (former == next || !isActiveTweak(former, item.item()->id())) return;
  if (!isInstalledApp(former)) {
    printWarning(former + ": the app is gone; its record of this item stays");
    return;
  }
  setActiveTweak(*appWithBundleID(former), nullptr);
  printNote(configuration.name() + ": uninstalled from " + former + "; not installed for " + next);
}

void warnOfCollections(const std::string& id, const std::string& bundleID) {
  for (const std::shared_ptr<TweakProtocol>& item : TweakManager::allTweaks()) {
    const auto* collection = dynamic_cast<const TweakCollection*>(item.get());
    if (collection == nullptr) continue;
    const TweakCollection::Manifest manifest = collection->manifest();
    const auto& ids = manifest._tweaks;
    const bool isMember = std::find(ids.begin(), ids.end(), id) != ids.end();
    if (!isMember || manifest.configuration.bundleID == bundleID) continue;
    printWarning("the collection " + manifest.configuration.name + ", which contains it, is for " +
                 manifest.configuration.bundleID + " and can no longer be installed");
  }
}

}  // namespace tavlen::cli
