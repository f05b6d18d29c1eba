#pragma once

#include <memory>
#include <optional>
#include <utility>

#include "tavlen/collections/TweakCollection.h"
#include "tavlen/foundation/base/API.h"
#include "tavlen/items/TweakDiffProtocol.h"

namespace tavlen {

/// One change of a collection.
struct TAVLEN_API TweakCollection::Diff : TweakDiffProtocol {
  /// The kind of change.
  enum class Mode { create, updateManifest, delete_ };

  /// `changed` must not be null.
  Diff(std::shared_ptr<TweakCollection> changed, Mode how) : tweak(std::move(changed)), mode(how) {}

  /// The changed collection. Never null.
  std::shared_ptr<TweakCollection> tweak;
  /// What was changed.
  Mode mode;

  std::optional<GenericTweakDiffMode> genericMode() const override;
  std::shared_ptr<TweakProtocol> genericTweak() const override { return tweak; }
};

}  // namespace tavlen
