#include "tavlen/collections/TweakCollectionManifest.h"

#include <exception>

#include "tavlen/foundation/files/FileSystem.h"
#include "tavlen/items/TweaksDirectory.h"
#include "tavlen/tweaks/TweakFile.h"

namespace tavlen {

std::vector<std::shared_ptr<TweakFile>> TweakCollection::Manifest::tweaks() const {
  std::vector<std::shared_ptr<TweakFile>> tweaks;
  for (const std::string& id : _tweaks) {
    // Whatever an imported collection names, only stored tweaks are its members.
    if (!TweakFile::isValidID(id) || !isPlainComponent(id)) continue;
    try {
      tweaks.push_back(TweakFile::at(TweaksDirectory::url() / id));
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
