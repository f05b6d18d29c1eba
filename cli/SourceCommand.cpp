#include <CLI/CLI.hpp>
#include <memory>
#include <string>

#include "cli/ArgumentChecks.h"
#include "cli/Commands.h"
#include "cli/Console.h"
#include "cli/StoredItem.h"
#include "cli/TweakArgument.h"
#include "tavlen/tweaks/TweakProcessor.h"

namespace tavlen::cli {

void addSourceCommand(CLI::App& app, Action& action) {
  auto* command = app.add_subcommand("source", "Print the text that the transpiler is given");
  const auto tweak = std::make_shared<std::string>();
  command->add_option("TWEAK", *tweak, kTweakHelp)->required()->check(notEmpty());
  command->callback([tweak, &action] {
    action = [tweak] {
      const OpenedTweak opened = openTweak(*tweak);
      printData(TweakProcessor::assembled(TweakProcessor::generateCode(opened.manifest.hooks()),
                                          opened.script));
      return 0;
    };
  });
}

}  // namespace tavlen::cli
