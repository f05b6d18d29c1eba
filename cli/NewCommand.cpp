#include "cli/Commands.h"
#include "cli/ItemCreation.h"
#include "tavlen/tweaks/TweakFile.h"

namespace tavlen::cli {

void addNewCommand(CLI::App& app, Action& action) {
  addItemCreation(app, action, "tweak", TweakFile::create);
}

}  // namespace tavlen::cli
