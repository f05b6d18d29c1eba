#include "tavlen/collections/TweakCollectionPackaging.h"

#include <optional>
#include <utility>
#include <vector>

#include "tavlen/bundles/IPA.h"

namespace tavlen {

void packageCollection(const TweakCollection::Opened& collection,
                       const std::vector<TweakFile::Opened>& members, const Info& target,
                       const Packaging& packaging, TweakInfo& tweakInfo) {
  checkTarget(tweakInfo, collection.manifest.configuration.bundleID);
  // Check all targets first, before spending time on building any member.
  for (const TweakFile::Opened& member : members) {
    checkTarget(tweakInfo, member.manifest.configuration.bundleID);
  }
  TweakInfo next = tweakInfo;
  std::optional<URL> icon;
  for (const TweakFile::Opened& member : members) {
    next.customIconURL.reset();
    packageTweak(member, target, packaging, next);
    if (!icon) icon = std::move(next.customIconURL);
  }
  next.customIconURL = std::move(icon);
  tweakInfo = std::move(next);
}

void TweakCollection::package(const std::filesystem::path& directory,
                              const std::filesystem::path& transpiler, TweakInfo& tweakInfo,
                              bool copyExecutables) const {
  const Opened opened = {std::const_pointer_cast<TweakCollection>(shared_from_this()), manifest()};
  const std::string& bundleID = opened.manifest.configuration.bundleID;
  checkTarget(tweakInfo, bundleID);
  const std::vector<TweakFile::Opened> members = opened.manifest.openedTweaks();
  const Info target =
      members.empty() ? Info() : IPA::findWithBundleID(bundleID)->infoManager().info();
  packageCollection(opened, members, target, {directory, transpiler, copyExecutables}, tweakInfo);
}

}  // namespace tavlen
