#pragma once

#include <array>
#include <optional>
#include <string_view>

#include "tavlen/foundation/base/API.h"
#include "tavlen/foundation/coding/RawValueCoding.h"

namespace tavlen {

/// The orientations of an app's interface.
enum class InterfaceOrientation { portrait, portraitUpsideDown, landscapeLeft, landscapeRight };

/// Their names in an Info.plist.
template <>
struct RawValues<InterfaceOrientation> {
  /// In the order of the enumeration.
  static constexpr std::array<std::string_view, 4> names{
      "UIInterfaceOrientationPortrait",
      "UIInterfaceOrientationPortraitUpsideDown",
      "UIInterfaceOrientationLandscapeLeft",
      "UIInterfaceOrientationLandscapeRight",
  };
  /// For error messages.
  static constexpr std::string_view typeName = "interface orientation";
};

/// The name without its common prefix: "Portrait".
TAVLEN_API std::string_view shortName(InterfaceOrientation orientation);
/// The orientation with that name, short or full; nothing for any other text.
TAVLEN_API std::optional<InterfaceOrientation> orientationNamed(std::string_view name);

}  // namespace tavlen
