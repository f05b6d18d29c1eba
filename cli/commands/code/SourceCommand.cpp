#include <memory>
#include <string>

#include "cli/commands/Commands.h"
#include "cli/terminal/Console.h"
#include "cli/terminal/ShownText.h"
#include "cli/tweaks/TweakForReading.h"
#include "tavlen/tweaks/TweakProcessor.h"

namespace tavlen::cli {

void addSourceCommand(Command app) {
  Command command = app.addCommand("source", "Print the source text for the transpiler");
  const auto tweak = std::make_shared<std::string>();
  const auto json = std::make_shared<bool>(false);
  command.text("TWEAK", *tweak, kReadTweakHelp).required().notEmpty();
  command.flag("--json", *json, "Print a JSON string");
  command.run([tweak, json] {
    const OpenedTweak opened = openTweak(*tweak);
    const std::string source = TweakProcessor::assembled(
        TweakProcessor::generateCode(opened.manifest.hooks()), opened.script);
    printData(*json ? shownJSON(source) + "\n" : source);
    return 0;
  });
}

}  // namespace tavlen::cli
