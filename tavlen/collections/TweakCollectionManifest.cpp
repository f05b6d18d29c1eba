#include "tavlen/collections/TweakCollectionManifest.h"

#include <exception>

#include "tavlen/foundation/files/FileSystem.h"
#include "tavlen/items/TweaksDirectory.h"

namespace tavlen {

namespace {

/// The results of `open` for the folders of the stored tweaks among `ids`. Tweaks for which `open`
/// throws are left out, as documented.
template <class Open>
auto openMembers(const std::vector<std::string>& ids, const Open& open) {
  std::vector<decltype(open(TweaksDirectory::url()))> members;
  for (const std::string& id : ids) {
    // An imported collection may contain any text as an identifier; only stored tweaks are members.
    if (!TweakFile::isValidID(id) || !isPlainComponent(id)) continue;
    try {
      members.push_back(open(TweaksDirectory::url() / id));
    } catch (const std::exception&) {
      continue;
    }
  }
  return members;
}

}  // namespace

std::vector<std::shared_ptr<TweakFile>> TweakCollection::Manifest::tweaks() const {
  return openMembers(_tweaks, TweakFile::at);
}

std::vector<TweakFile::Opened> TweakCollection::Manifest::openedTweaks() const {
  return openMembers(_tweaks, TweakFile::open);
}

void TweakCollection::Manifest::setTweaks(std::span<const std::shared_ptr<TweakFile>> tweaks) {
  _tweaks.clear();
  _tweaks.reserve(tweaks.size());
  for (const std::shared_ptr<TweakFile>& tweak : tweaks) _tweaks.push_back(tweak->id());
}

}  // namespace tavlen
