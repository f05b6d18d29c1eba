#pragma once

#include <memory>
#include <optional>
#include <utility>

#include "tavlen/collections/TweakCollection.h"
#include "tavlen/items/TweakDiffProtocol.h"

namespace tavlen {

/// One change of a collection.
struct TweakCollection::Diff : TweakDiffProtocol {
  enum class Mode { create, updateManifest, delete_ };

  Diff(std::shared_ptr<TweakCollection> changed, Mode how) : tweak(std::move(changed)), mode(how) {}

  std::shared_ptr<TweakCollection> tweak;
  Mode mode;

  std::optional<GenericTweakDiffMode> genericMode() const override;
  std::shared_ptr<TweakProtocol> genericTweak() const override { return tweak; }
};

}  // namespace tavlen
