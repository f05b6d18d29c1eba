#pragma once

#include <filesystem>
#include <memory>
#include <string>
#include <utility>

#include "tavlen/bundles/InstallableTweak.h"
#include "tavlen/items/TweakProtocol.h"

namespace tavlen {

/// A stored tweak or collection as IPA::setActiveTweak() takes it.
class InstallableItem : public InstallableTweak {
 public:
  /// `transpiler` is the folder of "ob.js"; `copyExecutables` is whether the item's executables go
  /// with it.
  InstallableItem(std::shared_ptr<const TweakProtocol> item, std::filesystem::path transpiler,
                  bool copyExecutables)
      : item_(std::move(item)),
        transpiler_(std::move(transpiler)),
        copyExecutables_(copyExecutables) {}

  std::string id() const override { return item_->id(); }
  /// Throws what the item's package() throws.
  void package(const std::filesystem::path& directory, TweakInfo& tweakInfo) const override {
    item_->package(directory, transpiler_, tweakInfo, copyExecutables_);
  }

 private:
  std::shared_ptr<const TweakProtocol> item_;
  std::filesystem::path transpiler_;
  bool copyExecutables_;
};

}  // namespace tavlen
