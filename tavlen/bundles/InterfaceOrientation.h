#pragma once

#include <array>
#include <string_view>

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

}  // namespace tavlen
