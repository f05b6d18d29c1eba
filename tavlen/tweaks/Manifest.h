#pragma once

#include <memory>
#include <string_view>
#include <vector>

#include "tavlen/bundles/OverrideContainer.h"
#include "tavlen/foundation/base/API.h"
#include "tavlen/foundation/base/BoxedOptional.h"
#include "tavlen/foundation/base/Limits.h"
#include "tavlen/foundation/coding/Coding.h"
#include "tavlen/foundation/json/IgnoredKeys.h"
#include "tavlen/items/ItemConfiguration.h"
#include "tavlen/items/TweakConfiguration.h"
#include "tavlen/items/TweakManifest.h"
#include "tavlen/tweaks/Hook.h"
#include "tavlen/tweaks/TweakFile.h"

namespace tavlen {

template <>
struct ElementLimit<BoxedOptional<Hook>> {
  static constexpr std::size_t kMost = limits::kHooks;
  static constexpr std::string_view kName = "hooks";
};

/// A tweak's document, which is stored as Manifest.json in its folder.
struct TAVLEN_API TweakFile::Manifest {
  /// The type of a tweak's settings.
  using Configuration = ItemConfiguration<TweakFile>;

  /// The tweak's settings.
  Configuration configuration;
  /// The overrides in their boxes, as they are coded; see overrides().
  std::vector<OverrideContainer> _overrides;
  /// The hooks as they are coded; see hooks(). A null in the file is an empty entry, which is kept
  /// until setHooks() drops it.
  std::vector<BoxedOptional<Hook>> _hooks;

  /// A copy of the overrides, out of their boxes, in the user's order.
  std::vector<Override> overrides() const;
  /// Replaces all overrides.
  void setOverrides(std::vector<Override> overrides);

  /// A copy of the hooks without the empty entries, in the user's order.
  std::vector<Hook> hooks() const;
  /// Replaces all hooks, and drops empty entries.
  void setHooks(std::vector<Hook> hooks);

  /// A copy of the settings.
  TweakConfiguration genericConfiguration() const { return TweakConfiguration(configuration); }

  static constexpr auto codedFields() {
    return std::tuple{
        requiredField("configuration", &Manifest::configuration),
        requiredField("overrides", &Manifest::_overrides),
        requiredField("hooks", &Manifest::_hooks),
    };
  }
  bool operator==(const Manifest&) const = default;
};

static_assert(TweakManifestRecord<TweakFile::Manifest>);

/// A tweak with the manifest that was read when it was opened. Passing it on saves reading the
/// document again.
struct TAVLEN_API TweakFile::Opened {
  std::shared_ptr<TweakFile> file;  ///< never null
  Manifest manifest;                ///< as read; later edits do not change it
  IgnoredKeys ignoredKeys = {};     ///< of the document, which storing the manifest would drop
};

}  // namespace tavlen
