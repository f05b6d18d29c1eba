#include <filesystem>
#include <memory>
#include <string>
#include <system_error>

#include "cli/arguments/TranspilerOption.h"
#include "cli/commands/Commands.h"
#include "cli/terminal/Console.h"
#include "cli/terminal/ShownText.h"
#include "cli/tweaks/Transpilation.h"
#include "cli/tweaks/TweakCheck.h"
#include "cli/tweaks/TweakForReading.h"
#include "tavlen/foundation/files/FileReplacement.h"

namespace tavlen::cli {

namespace {

constexpr const char* kStandardOutput = "-";

struct Options {
  std::string tweak;
  std::string output = kStandardOutput;
  std::string transpiler;
  bool json = false;
};

/// The JSON output: the texts, or the paths of the files that hold them.
struct Built {
  std::string code;
  std::string map;

  static constexpr auto codedFields() {
    return std::tuple{requiredField("code", &Built::code), requiredField("map", &Built::map)};
  }
};

/// Writes both files to the disk before either is renamed into place: code and map must match.
Built write(const TweakProcessor::Output& output, const std::filesystem::path& folder) {
  std::error_code error;
  std::filesystem::create_directories(folder, error);
  if (error) throw std::system_error(error, folder.string());
  const std::filesystem::path codeFile = folder / "code.js";
  const std::filesystem::path mapFile = folder / "code.js.map";
  FileReplacement code(codeFile, output.code);
  FileReplacement map(mapFile, output.map);
  code.commit();
  map.commit();
  return {codeFile.string(), mapFile.string()};
}

int build(const Options& options) {
  const OpenedTweak tweak = openTweak(options.tweak);
  printWarnings(tweak);
  const bool printsCode = options.output == kStandardOutput && !options.json;
  const auto output =
      transpile(tweak, transpilerFolder(options.transpiler),
                printsCode ? TweakProcessor::Map::leaveOut : TweakProcessor::Map::make);
  if (!output) {
    printError(tweak.argument + ": does not build");
    return 1;
  }
  if (options.output == kStandardOutput) {
    printData(options.json ? shownJSON(Built{output->code, output->map}) + "\n" : output->code);
    return 0;
  }
  const Built files = write(*output, options.output);
  if (options.json) printJSON(files);
  return 0;
}

}  // namespace

void addBuildCommand(Command app) {
  Command command = app.addCommand("build", "Translate a tweak into code and a source map");
  const auto options = std::make_shared<Options>();
  command.text("TWEAK", options->tweak, kReadTweakHelp).required().notEmpty();
  command
      .text("-o,--output", options->output,
            "The folder for code.js and code.js.map; - to print the code, the default")
      .typeName("DIR")
      .notEmpty();
  command.flag("--json", options->json,
               "Print a JSON object with code and map: the texts, or with -o DIR the paths");
  addTranspilerOption(command, options->transpiler);
  command.run([options] { return build(*options); });
}

}  // namespace tavlen::cli
