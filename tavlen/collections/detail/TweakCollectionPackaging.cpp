#include "tavlen/collections/detail/TweakCollectionPackaging.h"

#include <optional>
#include <utility>
#include <vector>

#include "tavlen/collections/TweakCollectionManifest.h"
#include "tavlen/tweaks/TweakFile.h"
#include "tavlen/tweaks/TweakPackaging.h"

namespace tavlen {

void packageCollection(const TweakCollection& collection, const std::filesystem::path& directory,
                       const std::filesystem::path& transpiler, TweakInfo& tweakInfo,
                       bool copyExecutables) {
  const TweakCollection::Manifest manifest = collection.manifest();
  checkTarget(tweakInfo, manifest.configuration.bundleID);
  const std::vector<std::shared_ptr<TweakFile>> members = manifest.tweaks();
  // All targets first: they cost a read, a member that is built costs the transpiler's time.
  for (const auto& member : members) {
    checkTarget(tweakInfo, member->genericManifest().genericConfiguration().bundleID());
  }
  TweakInfo next = tweakInfo;
  std::optional<URL> icon;
  for (const auto& member : members) {
    next.customIconURL.reset();
    member->package(directory, transpiler, next, copyExecutables);
    if (!icon) icon = std::move(next.customIconURL);
  }
  next.customIconURL = std::move(icon);
  tweakInfo = std::move(next);
}

void TweakCollection::package(const std::filesystem::path& directory,
                              const std::filesystem::path& transpiler, TweakInfo& tweakInfo,
                              bool copyExecutables) const {
  packageCollection(*this, directory, transpiler, tweakInfo, copyExecutables);
}

}  // namespace tavlen
