#pragma once

#include <optional>

#include "tavlen/items/TweakGlyph.h"

/// The glyphs that can be shown: those of Font Awesome Free 5.15.4, listed in GlyphTable.inc.
/// Threads: any.
namespace tavlen {

/// Whether the icon exists in that style. Names compare exactly.
bool isKnownGlyph(const TweakGlyph& glyph);

/// The known glyph that was probably meant: the icon whose name needs the fewest corrections, at
/// most three and at most a third of its letters. The style is kept if that icon has it. Of equally
/// close names, the alphabetically first is chosen. A known glyph suggests itself. Returns nothing
/// if no name is close enough.
std::optional<TweakGlyph> suggestedGlyph(const TweakGlyph& glyph);

}  // namespace tavlen
