#pragma once

#include <array>
#include <string_view>

#include "tavlen/foundation/coding/RawValueCoding.h"

namespace tavlen {

/// How an app may be turned, in the words of its Info.plist.
enum class InterfaceOrientation { portrait, portraitUpsideDown, landscapeLeft, landscapeRight };

template <>
struct RawValues<InterfaceOrientation> {
  static constexpr std::array<std::string_view, 4> names{
      "UIInterfaceOrientationPortrait",
      "UIInterfaceOrientationPortraitUpsideDown",
      "UIInterfaceOrientationLandscapeLeft",
      "UIInterfaceOrientationLandscapeRight",
  };
  static constexpr std::string_view typeName = "interface orientation";
};

}  // namespace tavlen
