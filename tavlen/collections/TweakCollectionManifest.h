#pragma once

#include <memory>
#include <span>
#include <string>
#include <vector>

#include "tavlen/collections/TweakCollection.h"
#include "tavlen/foundation/base/API.h"
#include "tavlen/foundation/coding/Coding.h"
#include "tavlen/items/ItemConfiguration.h"
#include "tavlen/items/TweakConfiguration.h"
#include "tavlen/items/TweakManifest.h"
#include "tavlen/tweaks/Manifest.h"

namespace tavlen {

/// A collection's document.
struct TAVLEN_API TweakCollection::Manifest {
  /// The type of a collection's settings.
  using Configuration = ItemConfiguration<TweakCollection>;

  /// The collection's settings.
  Configuration configuration;
  /// The members' identifiers, in display order.
  std::vector<std::string> _tweaks;

  /// Opens the members in the tweaks directory. Collections, and members that cannot be opened, are
  /// left out. A member that is named several times is opened once.
  std::vector<std::shared_ptr<TweakFile>> tweaks() const;
  /// As tweaks(), but also returns the manifests that were read, and each member once.
  std::vector<TweakFile::Opened> openedTweaks() const;
  /// Replaces the members by `tweaks`, none of which may be null.
  void setTweaks(std::span<const std::shared_ptr<TweakFile>> tweaks);

  /// A copy of the settings.
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

/// A collection with the manifest that was read when it was opened.
struct TAVLEN_API TweakCollection::Opened {
  std::shared_ptr<TweakCollection> file;  ///< never null
  Manifest manifest;                      ///< as read; later edits do not change it

  /// As TweakCollection::preparePayloadIn(), but for a copy of the collection with only `members`,
  /// which are some of manifest.openedTweaks(), in their order. Reads no document again.
  void preparePayloadIn(const std::filesystem::path& directory,
                        std::span<const TweakFile::Opened> members) const;
};

/// A collection that is not stored, with its members.
struct TAVLEN_API TweakCollection::Unpacked {
  Opened collection;                       ///< the collection
  std::vector<TweakFile::Opened> members;  ///< in the folder next to it, each once
};

}  // namespace tavlen
