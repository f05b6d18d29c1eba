#pragma once

#include <memory>
#include <span>
#include <string>
#include <vector>

#include "tavlen/collections/TweakCollection.h"
#include "tavlen/foundation/coding/Coding.h"
#include "tavlen/items/ItemConfiguration.h"
#include "tavlen/items/TweakConfiguration.h"
#include "tavlen/items/TweakManifest.h"
#include "tavlen/tweaks/Manifest.h"

namespace tavlen {

/// The document of a collection.
struct TweakCollection::Manifest {
  using Configuration = ItemConfiguration<TweakCollection>;

  Configuration configuration;
  /// The members' identifiers, in the order in which they are shown.
  std::vector<std::string> _tweaks;

  /// The members, opened in the tweaks directory; those that cannot be opened, and collections, are
  /// left out. A member that is named many times is opened once.
  std::vector<std::shared_ptr<TweakFile>> tweaks() const;
  /// As tweaks(), with the manifests that were read, each member once.
  std::vector<TweakFile::Opened> openedTweaks() const;
  void setTweaks(std::span<const std::shared_ptr<TweakFile>> tweaks);

  TweakConfiguration genericConfiguration() const { return TweakConfiguration(configuration); }

  static constexpr auto codedFields() {
    return std::tuple{
        requiredField("configuration", &Manifest::configuration),
        requiredField("tweaks", &Manifest::_tweaks),
    };
  }
  bool operator==(const Manifest&) const = default;
};

static_assert(TweakManifestRecord<TweakCollection::Manifest>);

/// A collection and its manifest as it was read when the collection was opened.
struct TweakCollection::Opened {
  std::shared_ptr<TweakCollection> file;  ///< never null
  Manifest manifest;
};

}  // namespace tavlen
