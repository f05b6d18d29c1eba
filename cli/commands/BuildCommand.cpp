#include <filesystem>
#include <memory>
#include <string>
#include <system_error>

#include "cli/arguments/StoredItem.h"
#include "cli/arguments/TranspilerOption.h"
#include "cli/arguments/TweakArgument.h"
#include "cli/commands/Commands.h"
#include "cli/terminal/Console.h"
#include "cli/work/Transpilation.h"
#include "cli/work/TweakCheck.h"
#include "tavlen/foundation/files/FileReplacement.h"

namespace tavlen::cli {

namespace {

struct Options {
  std::string tweak;
  std::string output;
  std::string transpiler;
};

int build(const Options& options) {
  const OpenedTweak tweak = openTweak(options.tweak);
  printWarnings(tweak);
  const auto output = transpile(tweak, transpilerFolder(options.transpiler));
  if (!output) {
    printError(tweak.argument + ": does not build");
    return 1;
  }
  if (options.output.empty()) {
    printData(output->code);
    return 0;
  }
  const std::filesystem::path folder = options.output;
  std::error_code error;
  std::filesystem::create_directories(folder, error);
  if (error) throw std::system_error(error, folder.string());
  // Write both files to the disk before either is renamed into place: code and map must match.
  FileReplacement code(folder / "code.js", output->code);
  FileReplacement map(folder / "code.js.map", output->map);
  code.commit();
  map.commit();
  return 0;
}

}  // namespace

void addBuildCommand(Command app) {
  Command command = app.addCommand("build", "Translate a tweak into code and a source map");
  const auto options = std::make_shared<Options>();
  command.text("TWEAK", options->tweak, kTweakHelp).required().notEmpty();
  command
      .text("-o,--output", options->output,
            "The folder for code.js and code.js.map; without it, the code is printed")
      .typeName("DIR")
      .notEmpty();
  addTranspilerOption(command, options->transpiler);
  command.run([options] { return build(*options); });
}

}  // namespace tavlen::cli
