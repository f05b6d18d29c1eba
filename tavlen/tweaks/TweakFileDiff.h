#pragma once

#include <memory>
#include <optional>
#include <variant>
#include <vector>

#include "tavlen/items/TweakDiffProtocol.h"
#include "tavlen/tweaks/Hook.h"
#include "tavlen/tweaks/TweakFile.h"

namespace tavlen {

/// One change of a tweak.
struct TweakFile::Diff : TweakDiffProtocol {
  /// The hook after the change.
  struct UpdateHook {
    Hook hook;
  };
  struct AddHooks {
    std::vector<Hook> hooks;
  };
  struct Create {};
  struct UpdateManifest {};
  struct UpdateIcon {};
  struct DeleteHook {};
  struct Delete {};
  using Mode =
      std::variant<UpdateHook, AddHooks, Create, UpdateManifest, UpdateIcon, DeleteHook, Delete>;

  Diff(std::shared_ptr<TweakFile> changed, Mode how);

  std::shared_ptr<TweakFile> tweak;
  Mode mode;

  std::optional<GenericTweakDiffMode> genericMode() const override;
  std::shared_ptr<TweakProtocol> genericTweak() const override { return tweak; }
};

}  // namespace tavlen
