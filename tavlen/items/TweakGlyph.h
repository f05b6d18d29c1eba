#pragma once

#include <string>
#include <tuple>

#include "tavlen/foundation/base/API.h"
#include "tavlen/foundation/coding/Coding.h"

namespace tavlen {

/// The icon of a tweak or a collection, by the names of Font Awesome 5.15.4.
///
/// Unknown names are kept, because a document may come from a newer program. GlyphNames.h knows
/// which names exist.
struct TAVLEN_API TweakGlyph {
  std::string icon;   ///< "tools"
  std::string style;  ///< "solid", "regular", "brands"

  bool operator==(const TweakGlyph&) const = default;

  /// The icon `tools` in the style `solid`, for documents that name no glyph.
  static const TweakGlyph& default_();

  static constexpr auto codedFields() {
    return std::tuple{requiredField("icon", &TweakGlyph::icon),
                      requiredField("style", &TweakGlyph::style)};
  }
};

}  // namespace tavlen
