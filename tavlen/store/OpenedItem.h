#pragma once

#include <memory>
#include <variant>
#include <vector>

#include "tavlen/collections/TweakCollectionManifest.h"
#include "tavlen/foundation/base/API.h"
#include "tavlen/tweaks/Manifest.h"

namespace tavlen {

/// A tweak or a collection with the manifest that was read when it was opened. Passing it on saves
/// reading the document again.
struct TAVLEN_API OpenedItem : std::variant<TweakFile::Opened, TweakCollection::Opened> {
  /// Constructed from either alternative.
  using variant::variant;

  /// The opened tweak; null for a collection.
  const TweakFile::Opened* tweak() const { return std::get_if<TweakFile::Opened>(this); }
  /// The opened collection; null for a tweak.
  const TweakCollection::Opened* collection() const {
    return std::get_if<TweakCollection::Opened>(this);
  }

  /// The handle. Never null.
  std::shared_ptr<TweakProtocol> item() const;
  /// A copy of the settings.
  TweakConfiguration configuration() const;
  /// A copy of the manifest.
  TweakManifest manifest() const;
};

}  // namespace tavlen
