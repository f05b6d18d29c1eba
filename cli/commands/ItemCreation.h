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

/// Creates an empty item of one kind in the store.
using ItemFactory = std::function<std::shared_ptr<TweakProtocol>(
    const std::string& name, TweakColor color, const TweakGlyph& glyph,
    const std::string& bundleID)>;

/// Adds the subcommand `new NAME --app APP [--color COLOR] [--glyph ICON[/STYLE]]` to `group`. It
/// creates an item by `make`, announces it and prints its identifier. `kind` is the kind's name in
/// help, such as "tweak". An unknown glyph is wrong usage; the message suggests a known one.
void addItemCreation(Command group, const std::string& kind, ItemFactory make);

}  // namespace tavlen::cli
