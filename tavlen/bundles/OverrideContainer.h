#pragma once

#include <cstddef>
#include <map>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "tavlen/bundles/Override.h"
#include "tavlen/foundation/coding/TypeKeyedCoding.h"

namespace tavlen {

/// What is known of a kind of override without a value of it.
struct OverrideKindInfo {
  std::string_view identifier;
  LocalizedText title;
  /// A new override of the kind, made of an app's current value.
  Override (*withInfo)(const Info& info);

  /// The title in the user's language.
  std::string localizedName() const;
};

/// The box that a stored override lies in: coded with its kind's identifier under the type key,
/// beside the kind's own "value".
struct OverrideContainer {
  /// A section, and a row in it.
  using IndexPath = std::pair<std::size_t, std::size_t>;

  Override value;

  /// The kinds in the sections and the order in which they are shown. Lives as long as the process.
  static const std::vector<std::vector<OverrideKindInfo>>& all();
  /// The kinds by their place in all(); made anew by each call.
  static std::map<IndexPath, OverrideKindInfo> allByIndex();
  /// The identifiers of all kinds, in the order of their look-up, which is that of all().
  static std::span<const std::string_view> supportedTypes();

  bool operator==(const OverrideContainer&) const = default;
};

}  // namespace tavlen
