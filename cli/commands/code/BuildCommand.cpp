#include <exception>
#include <filesystem>
#include <memory>
#include <stdexcept>
#include <string>

#include "cli/arguments/TranspilerOption.h"
#include "cli/commands/Commands.h"
#include "cli/terminal/Console.h"
#include "cli/terminal/NewFolder.h"
#include "cli/terminal/ShownText.h"
#include "cli/tweaks/Transpilation.h"
#include "cli/tweaks/TweakCheck.h"
#include "cli/tweaks/TweakForReading.h"
#include "tavlen/foundation/files/FileReplacement.h"
#include "tavlen/foundation/files/FileSystem.h"
#include "tavlen/tweaks/SourceMap.h"

namespace tavlen::cli {

namespace {

namespace fs = std::filesystem;

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

constexpr const char* kCodeFile = "code.js";
constexpr const char* kMapFile = "code.js.map";

bool isSourceMap(const fs::path& file) {
  try {
    SourceMap::decoded(readFile(file));
    return true;
  } catch (const std::exception&) {
    return false;
  }
}

/// Throws if the folder has one of the files, and no source map as build writes it.
void requireOwnFiles(const fs::path& folder) {
  const fs::path map = folder / kMapFile;
  for (const fs::path& file : {folder / kCodeFile, map}) {
    if (fs::is_regular_file(file) && !isSourceMap(map))
      throw std::runtime_error(file.string() + ": already exists, and build did not write it: " +
                               map.string() + " is no source map");
  }
}

/// Writes both files to the disk before either is renamed into place: code and map must match.
void writeInto(const fs::path& folder, const TweakProcessor::Output& output) {
  FileReplacement code(folder / kCodeFile, output.code);
  FileReplacement map(folder / kMapFile, output.map);
  code.commit();
  map.commit();
}

Built write(const TweakProcessor::Output& output, const fs::path& folder) {
  if (fs::is_directory(folder)) {
    writeInto(folder, output);
  } else {
    makeFolder(folder, [&](const fs::path& draft) { writeInto(draft, output); });
  }
  return {(folder / kCodeFile).string(), (folder / kMapFile).string()};
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
  requireOwnFiles(options.output);
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
            "The folder for code.js and code.js.map, which replace those of an earlier build; - to "
            "print the code, the default")
      .typeName("DIR")
      .notEmpty();
  command.flag("--json", options->json,
               "Print a JSON object with code and map: the texts, or with -o DIR the paths");
  addTranspilerOption(command, options->transpiler);
  command.run([options] { return build(*options); });
}

}  // namespace tavlen::cli
