#pragma once

#include <cstddef>
#include <map>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "tavlen/bundles/Override.h"
#include "tavlen/foundation/base/API.h"
#include "tavlen/foundation/coding/TypeKeyedCoding.h"

namespace tavlen {

/// A kind of override.
struct TAVLEN_API OverrideKindInfo {
  /// The kind's stored identifier.
  std::string_view identifier;
  /// The kind's title.
  LocalizedText title;
  /// Creates an override of the kind with the app's current value.
  Override (*withInfo)(const Info& info);

  /// The title in the user's language.
  std::string localizedName() const;
};

/// The stored form of an override: its kind's identifier under the type key, next to the kind's own
/// "value".
struct TAVLEN_API OverrideContainer {
  /// Section and row of a kind in a list.
  using IndexPath = std::pair<std::size_t, std::size_t>;

  /// The override.
  Override value;

  /// The kinds in sections, in the order of display. Never destroyed.
  static const std::vector<std::vector<OverrideKindInfo>>& all();
  /// The kinds by their position in all(); a new map on each call.
  static std::map<IndexPath, OverrideKindInfo> allByIndex();
  /// The identifiers of all kinds, in the order of all().
  static std::span<const std::string_view> supportedTypes();
  /// An override without a value, or with an empty one, of the kind at `index` of supportedTypes().
  static OverrideContainer emptyOfKind(std::size_t index);
  /// The identifier of the override's kind.
  std::string_view identifier() const { return supportedTypes()[value.index()]; }

  bool operator==(const OverrideContainer&) const = default;
};

}  // namespace tavlen
