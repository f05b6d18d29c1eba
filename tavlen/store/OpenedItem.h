#pragma once

#include <memory>
#include <variant>
#include <vector>

#include "tavlen/collections/TweakCollectionManifest.h"
#include "tavlen/tweaks/Manifest.h"

namespace tavlen {

/// A tweak or a collection, and its manifest as it was read when the item was opened: for callers
/// that need the manifest and pass on what they have read.
struct OpenedItem : std::variant<TweakFile::Opened, TweakCollection::Opened> {
  using variant::variant;

  /// Null for a collection.
  const TweakFile::Opened* tweak() const { return std::get_if<TweakFile::Opened>(this); }
  /// Null for a tweak.
  const TweakCollection::Opened* collection() const {
    return std::get_if<TweakCollection::Opened>(this);
  }

  /// Never null.
  std::shared_ptr<TweakProtocol> item() const;
  TweakConfiguration configuration() const;
  TweakManifest manifest() const;
};

}  // namespace tavlen
