#pragma once

#include "tavlen/tweaks/TweakColor.h"
#include "tavlen/tweaks/TweakGlyph.h"

namespace CLI {
class App;
}

namespace tavlen::cli {

/// How a new tweak or collection is to be shown.
struct Look {
  TweakColor color = TweakColor::lightGreen;
  TweakGlyph glyph = TweakGlyph::default_();
};

/// Adds `--color COLOR` and `--glyph ICON[/STYLE]` to `command`; parsing stores them in `look`,
/// which must live as long as the command. A glyph that is not known is wrong usage, with a
/// suggestion.
void addLookOptions(CLI::App& command, Look& look);

}  // namespace tavlen::cli
