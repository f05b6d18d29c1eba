#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "tavlen/foundation/base/API.h"
#include "tavlen/items/TweakGlyph.h"

/// The glyphs that can be shown: those of Font Awesome Free 5.15.4, listed in GlyphTable.inc.
/// Threads: any.
namespace tavlen {

/// All of them, sorted by their icons; the first style of an icon first.
TAVLEN_API std::vector<TweakGlyph> knownGlyphs();

/// Whether the icon exists in that style. Names compare exactly.
TAVLEN_API bool isKnownGlyph(const TweakGlyph& glyph);

/// The known glyph that was probably meant: that of the closestName() of an icon. The style is kept
/// if that icon has it. A known glyph suggests itself. Returns nothing if no name is close enough.
TAVLEN_API std::optional<TweakGlyph> suggestedGlyph(const TweakGlyph& glyph);

/// Reads "moon/regular", or "moon" for the style "solid" or else the icon's first one. The names
/// need not be known.
TAVLEN_API TweakGlyph glyphFromText(std::string_view text);
/// The glyph as "moon/regular".
TAVLEN_API std::string glyphText(const TweakGlyph& glyph);

}  // namespace tavlen
