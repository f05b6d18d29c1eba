#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "cli/arguments/StoredItem.h"
#include "cli/commands/Commands.h"
#include "cli/items/AppChange.h"
#include "cli/items/ItemNames.h"
#include "cli/items/StoreLock.h"
#include "cli/terminal/Console.h"
#include "cli/terminal/ShownText.h"
#include "cli/tweaks/AttachedFiles.h"
#include "cli/tweaks/TextInput.h"
#include "cli/tweaks/Transpilation.h"
#include "cli/tweaks/TweakCheck.h"
#include "cli/tweaks/TweakContents.h"
#include "tavlen/foundation/files/TemporaryDirectory.h"
#include "tavlen/items/TweaksDirectory.h"

namespace tavlen::cli {

namespace {

namespace fs = std::filesystem;

struct Options {
  std::string text;
  std::optional<std::string> tweak;
  bool isDryRun = false;
  bool json = false;
};

/// The JSON output: the tweak, unless it would have to be made first, and what changed.
struct Applied {
  std::optional<std::string> id;
  std::string kind;
  std::string name;
  std::vector<TweakChange> changes;

  static constexpr auto codedFields() {
    return std::tuple{optionalField("identifier", &Applied::id),
                      requiredField("kind", &Applied::kind), requiredField("name", &Applied::name),
                      requiredField("changes", &Applied::changes)};
  }
};

void printApplied(std::optional<std::string> id, const TweakContents& after,
                  std::vector<TweakChange> changes) {
  printJSON(Applied{std::move(id), "tweak", after.manifest.configuration.name, std::move(changes)});
}

/// The contents of a tweak that does not exist yet.
TweakContents nothingFor(const TweakContents& after) {
  TweakContents contents;
  contents.manifest.configuration = after.manifest.configuration;
  contents.wholeFolders.insert(kAttachedFolders.begin(), kAttachedFolders.end());
  return contents;
}

TextInput checkedInput(const std::string& text, const fs::path& target) {
  TextInput input = readTextInput(text);
  for (const Diagnostic& warning : warningsFor(input, target)) print(warning);
  // It is stored nevertheless, as scripts are.
  if (const auto error = conversionErrorOf(input)) {
    Diagnostic warning = asWarning(*error);
    warning.message += "; the tweak will not build";
    print(warning);
  }
  return input;
}

/// Opens the tweak to change. Throws if it cannot be called so.
TweakFile::Opened checkedTweak(const std::string& argument, const TweakContents& after) {
  TweakFile::Opened tweak = openedTweak(argument);
  requireNameFor(tweak, after.manifest.configuration.name);
  return tweak;
}

int changeTweak(const Options& options) {
  // A wrong name is reported before the app's classes are read, which takes long: without the lock.
  const fs::path target = storedTweak(*options.tweak)->url();
  const TweakContents after = contentsOf(checkedInput(options.text, target));
  const std::string& app = after.manifest.configuration.bundleID;
  // Checked before the helper runs, and once more under the lock.
  const TweakFile::Opened former = checkedTweak(*options.tweak, after);
  if (!options.isDryRun) takeAway(former, app);
  const StoreLock lock(*options.tweak);
  const TweakFile::Opened tweak = checkedTweak(*options.tweak, after);
  const TweakContents before = contentsOf(tweak);
  const std::vector<TweakChange> changes = changesBetween(before, after);
  if (!changes.empty() && !options.isDryRun) {
    replaceContents(*tweak.file, before, after);
    if (before.manifest.configuration.bundleID != app) warnOfCollections(tweak.file->id(), app);
  }
  if (options.json) {
    printApplied(tweak.file->id(), after, changes);
  } else if (changes.empty()) {
    printNote("the tweak is unchanged");
  } else {
    printChanges(changes, false);
  }
  return 0;
}

/// Stores a new tweak, under a name that is free, and returns its identifier.
std::string storeTweak(TweakContents& contents) {
  const StoreLock lock = StoreLock::ofStore();
  std::string& name = contents.manifest.configuration.name;
  name = ItemNames().take(name);
  const TemporaryDirectory folder(TweaksDirectory::create());
  const fs::path draft = folder.path() / "tweak";
  makeTweakFolder(draft, contents);
  const std::shared_ptr<TweakFile> tweak = TweakFile::handlePayloadAt(draft);
  announce(*tweak, GenericTweakDiffMode::create);
  return tweak->id();
}

int makeTweak(const Options& options) {
  TweakContents after = contentsOf(checkedInput(options.text, {}));
  const std::vector<TweakChange> changes = changesBetween(nothingFor(after), after);
  std::optional<std::string> id;
  if (!options.isDryRun) id = storeTweak(after);
  if (options.json) {
    printApplied(id, after, changes);
  } else if (id) {
    printData(*id + "\n");
  } else {
    const auto& settings = after.manifest.configuration;
    printData(shownLine("added tweak " + settings.name + " for " + settings.bundleID).append("\n"));
    printChanges(changes, false);
  }
  return 0;
}

}  // namespace

void addApplyCommand(Command app) {
  Command command = app.addCommand("apply", "Make a tweak from such a text, or change one");
  const auto options = std::make_shared<Options>();
  command
      .text("TEXT", options->text,
            "The text, or a folder with tweak.toml and its files, as written by dump; - for the "
            "standard input")
      .typeName("FILE|DIR")
      .required()
      .notEmpty();
  command
      .text("--to", options->tweak,
            "Change this tweak, which keeps its identifier, instead of making one: its identifier, "
            "its name, or its path")
      .typeName("TWEAK")
      .notEmpty();
  command.flag("--dry-run", options->isDryRun, "Print what would change, and store nothing");
  command.flag("--json", options->json, "Print a JSON object with the tweak and what changed");
  command.run([options] { return options->tweak ? changeTweak(*options) : makeTweak(*options); });
}

}  // namespace tavlen::cli
