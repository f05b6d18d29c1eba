#pragma once

#include <optional>

#include "cli/arguments/CommandLine.h"
#include "tavlen/items/TweakColor.h"
#include "tavlen/items/TweakGlyph.h"

namespace tavlen::cli {

/// How an item is shown, as far as the user says.
struct Look {
  std::optional<TweakColor> color;
  std::optional<TweakGlyph> glyph;
};

/// Adds `--color COLOR` and `--glyph GLYPH`. Parsing stores their values in `look`. An
/// unknown glyph is wrong usage; the message suggests a known one.
void addLookOptions(Command command, Look& look);

}  // namespace tavlen::cli
