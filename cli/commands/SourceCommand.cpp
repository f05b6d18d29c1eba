#include <memory>
#include <string>

#include "cli/arguments/StoredItem.h"
#include "cli/arguments/TweakArgument.h"
#include "cli/commands/Commands.h"
#include "cli/terminal/Console.h"
#include "tavlen/tweaks/TweakProcessor.h"

namespace tavlen::cli {

void addSourceCommand(Command app) {
  Command command = app.addCommand("source", "Print the source text for the transpiler");
  const auto tweak = std::make_shared<std::string>();
  command.text("TWEAK", *tweak, kTweakHelp).required().notEmpty();
  command.run([tweak] {
    const OpenedTweak opened = openTweak(*tweak);
    printData(TweakProcessor::assembled(TweakProcessor::generateCode(opened.manifest.hooks()),
                                        opened.script));
    return 0;
  });
}

}  // namespace tavlen::cli
