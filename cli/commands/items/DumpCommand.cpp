#include <filesystem>
#include <memory>
#include <optional>
#include <set>
#include <stdexcept>
#include <string>
#include <system_error>
#include <tuple>
#include <utility>

#include "cli/arguments/StoredItem.h"
#include "cli/commands/Commands.h"
#include "cli/terminal/Console.h"
#include "cli/terminal/ShownText.h"
#include "cli/tweaks/AttachedFiles.h"
#include "cli/tweaks/TweakContents.h"
#include "cli/tweaks/TweakForReading.h"
#include "tavlen/foundation/files/FileReplacement.h"
#include "tavlen/foundation/files/FileSystem.h"
#include "tavlen/tweaktext/TweakTextReader.h"

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

/// Whether the file can be read as the text of a tweak, so that a dump may replace it.
bool isTweakText(const fs::path& file) {
  try {
    readTweakText(readFile(file));
    return true;
  } catch (const TOMLError&) {
    return false;
  }
}

void requireReplaceable(const fs::path& file) {
  if (isTaken(file) && !isTweakText(file)) {
    throw std::runtime_error(file.string() + ": already exists and is not the text of a tweak");
  }
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

void writeFolder(const Dump& dump, const fs::path& folder) {
  const fs::path text = folder / kTextFile;
  if (fs::is_directory(folder) && !fs::is_empty(folder)) {
    if (!isTaken(text)) {
      throw std::runtime_error(folder.string() + ": is not empty and has no " + kTextFile);
    }
    requireReplaceable(text);
  }
  std::error_code error;
  fs::create_directories(folder, error);
  if (error) throw std::system_error(error, folder.string());
  const auto& [icon, script, files] =
      std::tie(dump.contents.icon, dump.contents.script, dump.contents.files);
  for (const auto& [name, from] : files) copyAttachedFile(from, folder, name);
  for (const std::string& name : attachedFiles(folder, folder.string())) {
    if (files.contains(name)) continue;
    printWarning((folder / name).string() + ": is not a file of the tweak; apply would add it");
  }
  if (icon) replaceFile(folder / TweakFile::iconFile, icon->pngData());
  if (script) replaceFile(folder / TweakFile::scriptFile, *script);
  // The text last: with it, the folder is complete.
  replaceFile(text, dump.text);
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
    writeFolder(dump, output);
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
