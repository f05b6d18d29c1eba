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

/// Adds the subcommand `new NAME --app APP [--color COLOR] [--glyph GLYPH]` to `group`. It
/// creates an item by `make`, announces it and prints its identifier; see addLookOptions(). `kind`
/// is the kind's name in help, such as "tweak". A name that is taken is refused.
void addItemCreation(Command group, const std::string& kind, ItemFactory make);

}  // namespace tavlen::cli
