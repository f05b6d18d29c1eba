#include "tavlen/store/InstallableItem.h"

#include <utility>

#include "tavlen/collections/TweakCollectionPackaging.h"
#include "tavlen/tweaks/TweakPackaging.h"

namespace tavlen {

namespace {

std::vector<TweakFile::Opened> tweaksOf(const OpenedItem& item) {
  if (const TweakFile::Opened* tweak = item.tweak()) return {*tweak};
  return item.collection()->manifest.openedTweaks();
}

}  // namespace

InstallableItem::InstallableItem(OpenedItem item, std::filesystem::path transpiler,
                                 bool copyExecutables)
    : item_(std::move(item)),
      tweaks_(tweaksOf(item_)),
      transpiler_(std::move(transpiler)),
      copyExecutables_(copyExecutables) {}

void InstallableItem::package(const Info& target, const std::filesystem::path& directory,
                              TweakInfo& tweakInfo) const {
  const Packaging packaging = {directory, transpiler_, copyExecutables_};
  if (const TweakCollection::Opened* collection = item_.collection()) {
    packageCollection(*collection, tweaks_, target, packaging, tweakInfo);
  } else {
    packageTweak(tweaks_.front(), target, packaging, tweakInfo);
  }
}

}  // namespace tavlen
