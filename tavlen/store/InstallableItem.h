#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "tavlen/bundles/InstallableTweak.h"
#include "tavlen/store/OpenedItem.h"

namespace tavlen {

/// An opened tweak or collection as IPA::setActiveTweak() takes it. No document is read again.
class InstallableItem : public InstallableTweak {
 public:
  /// Opens the members of a collection; those that cannot be opened are left out. `transpiler` is
  /// the folder of "ob.js"; `copyExecutables` is whether the executables of tweaks go with them.
  InstallableItem(OpenedItem item, std::filesystem::path transpiler, bool copyExecutables);

  /// What is installed: the tweak itself, or the members.
  const std::vector<TweakFile::Opened>& tweaks() const { return tweaks_; }

  std::string id() const override { return item_.item()->id(); }
  /// Throws what TweakProtocol::package() throws.
  void package(const Info& target, const std::filesystem::path& directory,
               TweakInfo& tweakInfo) const override;

 private:
  OpenedItem item_;
  std::vector<TweakFile::Opened> tweaks_;
  std::filesystem::path transpiler_;
  bool copyExecutables_;
};

}  // namespace tavlen
