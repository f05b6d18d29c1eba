#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <tuple>
#include <utility>

#include "cli/arguments/StoredItem.h"
#include "cli/commands/Commands.h"
#include "cli/terminal/Console.h"
#include "cli/terminal/ShownText.h"
#include "cli/tweaks/TextFolder.h"
#include "cli/tweaks/TweakContents.h"
#include "cli/tweaks/TweakForReading.h"
#include "tavlen/foundation/files/FileReplacement.h"

namespace tavlen::cli {

namespace {

namespace fs = std::filesystem;

constexpr const char* kStandardOutput = "-";

struct Options {
  std::string tweak;
  std::string output = kStandardOutput;
  bool json = false;
};

/// The JSON output: the text, or where it was written.
struct Dumped {
  std::optional<std::string> text;
  std::optional<std::string> path;

  static constexpr auto codedFields() {
    return std::tuple{optionalField("text", &Dumped::text), optionalField("path", &Dumped::path)};
  }
};

/// A tweak's text and what goes along with it.
struct Dump {
  TweakContents contents;
  std::string text;
};

Dump dumpOf(const std::string& name) {
  TweakContents contents = contentsOf(tweakForReading(name));
  std::string text = textOf(contents);
  return {std::move(contents), std::move(text)};
}

/// A single text lacks the other files, which it may name.
void warnOfFiles(const TweakContents& contents) {
  std::string missing;
  const auto add = [&](const std::string& name) {
    missing += (missing.empty() ? "" : ", ") + name;
  };
  if (contents.icon) add(TweakFile::iconFile);
  if (contents.script) add(TweakFile::scriptFile);
  for (const auto& file : contents.files) add(file.first);
  if (missing.empty()) return;
  printWarning("the text does not contain " + missing + "; -o DIR writes a folder with everything");
}

int dump(const Options& options) {
  const Dump dump = dumpOf(options.tweak);
  const fs::path output = options.output;
  const bool isStream = options.output == kStandardOutput;
  const bool isText = !isStream && output.extension() == ".toml" && !fs::is_directory(output);
  if (isText) {
    requireReplaceable(output);
    replaceFile(output, dump.text);
  } else if (!isStream) {
    writeTextFolder(dump.contents, dump.text, output);
  } else if (!options.json) {
    printData(dump.text);
  }
  if (isText || isStream) warnOfFiles(dump.contents);
  if (options.json) printJSON(isStream ? Dumped{dump.text, {}} : Dumped{{}, output.string()});
  return 0;
}

}  // namespace

void addDumpCommand(Command app) {
  Command command =
      app.addCommand("dump", "Write a tweak as a text to edit and keep under version control");
  const auto options = std::make_shared<Options>();
  command.text("TWEAK", options->tweak, kReadTweakHelp).required().notEmpty();
  command
      .text("-o,--output", options->output,
            "A name that ends in .toml for the text alone; else a folder for tweak.toml, the "
            "script, the icon, Resources and Executables; - for the standard output, the default. "
            "Only texts of tweaks and their folders are replaced")
      .typeName("FILE|DIR")
      .notEmpty();
  command.flag("--json", options->json, "Print a JSON object with the text, or with -o its path");
  command.run([options] { return dump(*options); });
}

}  // namespace tavlen::cli
