#pragma once

#include <functional>
#include <memory>
#include <string>

#include "cli/commands/Commands.h"
#include "tavlen/items/TweakColor.h"
#include "tavlen/items/TweakGlyph.h"

namespace tavlen {
class TweakProtocol;
}

namespace tavlen::cli {

/// Makes an item of a kind, empty, in the store.
using ItemFactory = std::function<std::shared_ptr<TweakProtocol>(
    const std::string& name, TweakColor color, const TweakGlyph& glyph,
    const std::string& bundleID)>;

/// Adds to `group` the subcommand `new NAME --app APP [--color COLOR] [--glyph ICON[/STYLE]]`,
/// which makes an item, calls it created and prints its identifier. `kind` is what help calls it,
/// "tweak". A glyph that is not known is wrong usage, with a suggestion.
void addItemCreation(Command group, const std::string& kind, ItemFactory make);

}  // namespace tavlen::cli
