#pragma once

#include <memory>
#include <string_view>
#include <vector>

#include "tavlen/bundles/OverrideContainer.h"
#include "tavlen/foundation/base/BoxedOptional.h"
#include "tavlen/foundation/base/Limits.h"
#include "tavlen/foundation/coding/Coding.h"
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

/// The document of a tweak, stored as Manifest.json in its folder.
struct TweakFile::Manifest {
  using Configuration = ItemConfiguration<TweakFile>;

  Configuration configuration;
  std::vector<OverrideContainer> _overrides;
  /// An absent hook, a null in the file, keeps its place until setHooks() drops it.
  std::vector<BoxedOptional<Hook>> _hooks;

  /// The overrides out of their boxes, in the user's order.
  std::vector<Override> overrides() const;
  void setOverrides(std::vector<Override> overrides);

  /// The hooks that are present, in the user's order.
  std::vector<Hook> hooks() const;
  /// Stores every hook as present.
  void setHooks(std::vector<Hook> hooks);

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

/// A tweak and its manifest as it was read when the tweak was opened, for callers that pass on what
/// they have read.
struct TweakFile::Opened {
  std::shared_ptr<TweakFile> file;  ///< never null
  Manifest manifest;
};

}  // namespace tavlen
