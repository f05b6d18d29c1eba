#include "tavlen/collections/TweakCollectionManifest.h"

#include <exception>

#include "tavlen/store/TweakManager.h"
#include "tavlen/tweaks/TweakFile.h"

namespace tavlen {

std::vector<std::shared_ptr<TweakFile>> TweakCollection::Manifest::tweaks() const {
  std::vector<std::shared_ptr<TweakFile>> tweaks;
  for (const std::string& id : _tweaks) {
    // Otherwise a collection that names itself would be read for nothing.
    if (!TweakFile::isValidID(id)) continue;
    try {
      auto tweak = std::dynamic_pointer_cast<TweakFile>(TweakManager::tweakWithID(id));
      if (tweak != nullptr) tweaks.push_back(std::move(tweak));
    } catch (const std::exception&) {
      continue;  // left out, as documented
    }
  }
  return tweaks;
}

void TweakCollection::Manifest::setTweaks(std::span<const std::shared_ptr<TweakFile>> tweaks) {
  _tweaks.clear();
  _tweaks.reserve(tweaks.size());
  for (const std::shared_ptr<TweakFile>& tweak : tweaks) _tweaks.push_back(tweak->id());
}

}  // namespace tavlen
