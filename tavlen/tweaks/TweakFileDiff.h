#pragma once

#include <memory>
#include <optional>
#include <variant>
#include <vector>

#include "tavlen/foundation/base/API.h"
#include "tavlen/items/TweakDiffProtocol.h"
#include "tavlen/tweaks/Hook.h"
#include "tavlen/tweaks/TweakFile.h"

namespace tavlen {

/// One change of a tweak.
struct TAVLEN_API TweakFile::Diff : TweakDiffProtocol {
  /// A hook was changed.
  struct UpdateHook {
    Hook hook;  ///< the hook after the change
  };
  /// Hooks were added at the end.
  struct AddHooks {
    std::vector<Hook> hooks;  ///< the new hooks, in order
  };
  /// The tweak was created.
  struct Create {};
  /// The manifest was replaced.
  struct UpdateManifest {};
  /// The user's icon was replaced or removed.
  struct UpdateIcon {};
  /// A hook was removed; the diff does not say which.
  struct DeleteHook {};
  /// The tweak was deleted.
  struct Delete {};
  /// The kind of change.
  using Mode =
      std::variant<UpdateHook, AddHooks, Create, UpdateManifest, UpdateIcon, DeleteHook, Delete>;

  /// `changed` must not be null.
  Diff(std::shared_ptr<TweakFile> changed, Mode how);

  /// The changed tweak. Never null.
  std::shared_ptr<TweakFile> tweak;
  /// What was changed.
  Mode mode;

  std::optional<GenericTweakDiffMode> genericMode() const override;
  std::shared_ptr<TweakProtocol> genericTweak() const override { return tweak; }
};

}  // namespace tavlen
