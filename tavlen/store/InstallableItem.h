#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "tavlen/bundles/InstallableTweak.h"
#include "tavlen/foundation/base/API.h"
#include "tavlen/store/OpenedItem.h"

namespace tavlen {

/// An opened tweak or collection, in the form required by IPA::setActiveTweak(). Reads no document
/// again.
class TAVLEN_API InstallableItem : public InstallableTweak {
 public:
  /// Opens the members of a collection; those that cannot be opened are left out. `transpiler` is
  /// the folder that contains "ob.js"; `copyExecutables` says whether to install the tweaks'
  /// executables.
  InstallableItem(OpenedItem item, std::filesystem::path transpiler, bool copyExecutables);

  /// The tweaks to install: the tweak itself, or the members of the collection.
  const std::vector<TweakFile::Opened>& tweaks() const { return tweaks_; }

  std::string id() const override { return item_.item()->id(); }
  /// Blocks, and cannot be cancelled. Throws what TweakProtocol::package() throws.
  void package(const Info& target, const std::filesystem::path& directory,
               TweakInfo& tweakInfo) const override;

 private:
  OpenedItem item_;
  std::vector<TweakFile::Opened> tweaks_;
  std::filesystem::path transpiler_;
  bool copyExecutables_;
};

}  // namespace tavlen
