#pragma once

#include <optional>

#include "tavlen/items/TweakGlyph.h"

/// The glyphs that can be shown: Font Awesome Free 5.15.4, from the table in GlyphTable.inc.
/// Threads: any.
namespace tavlen {

/// Whether there is an icon of that name in that style. Names compare exactly.
bool isKnownGlyph(const TweakGlyph& glyph);

/// The known glyph that was probably meant: the icon whose name takes the fewest corrections, at
/// most a third of its letters and three in all, in the style asked for where it has that one. Of
/// equally close names the alphabetically first. A known glyph suggests itself.
std::optional<TweakGlyph> suggestedGlyph(const TweakGlyph& glyph);

}  // namespace tavlen
