#include "cli/commands/Commands.h"
#include "cli/commands/items/ItemCreation.h"
#include "tavlen/tweaks/TweakFile.h"

namespace tavlen::cli {

void addNewCommand(Command app) { addItemCreation(app, "tweak", TweakFile::create); }

}  // namespace tavlen::cli
