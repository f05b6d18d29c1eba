#include <filesystem>
#include <memory>
#include <optional>
#include <set>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "cli/arguments/AppArgument.h"
#include "cli/arguments/StoredItem.h"
#include "cli/commands/Commands.h"
#include "cli/terminal/Console.h"
#include "cli/work/AttachedFiles.h"
#include "cli/work/StoreLock.h"
#include "cli/work/TextInput.h"
#include "cli/work/TweakChanges.h"
#include "tavlen/device/DeviceFiles.h"
#include "tavlen/foundation/files/FileSystem.h"
#include "tavlen/foundation/files/FileTree.h"
#include "tavlen/foundation/files/TemporaryDirectory.h"
#include "tavlen/foundation/text/EscapedText.h"
#include "tavlen/items/TweakPoster.h"
#include "tavlen/items/TweaksDirectory.h"

namespace tavlen::cli {

namespace {

namespace fs = std::filesystem;

struct Options {
  std::string text;
  std::optional<std::string> tweak;
  bool isDryRun = false;
};

/// What a stored tweak consists of.
struct Contents {
  TweakFile::Manifest manifest;
  std::optional<Image> icon;
  std::optional<std::string> script;
  fs::path folder;
  std::set<std::string> files;  ///< attachedFiles() of the folder
};

Contents contentsOf(TweakFile::Opened tweak) {
  return {std::move(tweak.manifest), tweak.file->customIcon(), tweak.file->readScript(),
          tweak.file->url(), attachedFiles(tweak.file->url())};
}

/// The contents of a tweak that does not exist yet.
Contents nothingFor(const TextInput& input) {
  Contents contents;
  contents.manifest.configuration = input.manifest.configuration;
  return contents;
}

/// The files of the tweak that the text's folder does not have, and ought to.
std::set<std::string> removedFiles(const Contents& before, const TextInput& input) {
  std::set<std::string> removed;
  for (const std::string& name : before.files) {
    const bool isOfWholeFolder = input.wholeFolders.contains(fs::path(name).begin()->string());
    if (isOfWholeFolder && !input.files.contains(name)) removed.insert(name);
  }
  return removed;
}

template <class Part>
void addPart(std::vector<std::string>& changes, const char* name, const std::optional<Part>& before,
             const std::optional<Part>& after) {
  if (before == after) return;
  const char* verb = !before ? "added" : !after ? "removed" : "changed";
  changes.push_back(std::string(verb) + " the " + name);
}

/// What differs, a sentence each.
std::vector<std::string> changesOf(const Contents& before, const TextInput& input) {
  std::vector<std::string> changes = changesBetween(before.manifest, input.manifest);
  addPart(changes, "icon", before.icon, input.icon);
  addPart(changes, "script", before.script, input.script);
  for (const std::string& name : removedFiles(before, input)) changes.push_back("removed " + name);
  for (const std::string& name : input.files) {
    if (!before.files.contains(name)) {
      changes.push_back("added " + name);
    } else if (!isSameFile(before.folder, input.folder, name)) {
      changes.push_back("changed " + name);
    }
  }
  return changes;
}

/// Writes the text's contents into the tweak folder `draft`, which holds those of `before`.
void write(const fs::path& draft, const Contents& before, const TextInput& input) {
  const std::shared_ptr<TweakFile> tweak = TweakFile::handle(draft);
  tweakPoster().performWithoutNotifications([&] {
    tweak->setManifest(input.manifest);
    if (before.icon != input.icon) tweak->writeCustomIcon(input.icon);
  });
  if (input.script) {
    if (before.script != input.script) tweak->writeScript(*input.script);
  } else {
    removeItem(draft / TweakFile::scriptFile);
  }
  for (const std::string& name : removedFiles(before, input)) removeItem(draft / name);
  for (const std::string& name : input.files) copyAttachedFile(input.folder, draft, name);
}

void printLines(const std::vector<std::string>& changes) {
  for (const std::string& change : changes) printData(escapedForTerminal(change) + "\n");
}

/// Changes a stored tweak: a copy of it, which then takes its place in one step.
void change(TweakFile& tweak, const Contents& before, const TextInput& input) {
  const fs::path place = canonical(DeviceRoot::shared(), tweak.url());
  if (isAtOrBelow(fs::current_path(), place)) {
    throw std::runtime_error(place.string() +
                             ": the folder is replaced; run the command in another one");
  }
  const TemporaryDirectory folder(place.parent_path());
  const fs::path draft = folder.path() / "tweak";
  tweak.preparePayloadIn(draft);
  write(draft, before, input);
  tweak.replaceBy(draft);
}

int changeTweak(const Options& options) {
  // A wrong name is reported before the app's classes are read, which takes long: without the lock.
  const fs::path target = storedTweak(*options.tweak)->url();
  const auto input = readTextInput(options.text, target);
  if (!input) return 1;
  const StoreLock lock(*options.tweak);
  TweakFile::Opened opened = openedTweak(*options.tweak);
  const std::shared_ptr<TweakFile> tweak = opened.file;
  const Contents before = contentsOf(std::move(opened));
  const std::vector<std::string> changes = changesOf(before, *input);
  if (changes.empty()) {
    printNote("the tweak is unchanged");
    return 0;
  }
  if (!options.isDryRun) change(*tweak, before, *input);
  printLines(changes);
  return 0;
}

int makeTweak(const Options& options) {
  const auto input = readTextInput(options.text, {});
  if (!input) return 1;
  const std::string& app = input->manifest.configuration.bundleID;
  if (!isInstalledApp(app)) printWarning(app + ": no app with that identifier is installed");
  const Contents before = nothingFor(*input);
  if (options.isDryRun) {
    printLines({"added tweak " + input->manifest.configuration.name + " for " + app});
    printLines(changesOf(before, *input));
    return 0;
  }
  const StoreLock lock = StoreLock::ofStore();
  const TemporaryDirectory folder(TweaksDirectory::create());
  const fs::path draft = folder.path() / "tweak";
  for (const char* name : kAttachedFolders) fs::create_directories(draft / name);
  write(draft, before, *input);
  const std::shared_ptr<TweakFile> tweak = TweakFile::handlePayloadAt(draft);
  announce(*tweak, GenericTweakDiffMode::create);
  printData(tweak->id() + "\n");
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
  command.run([options] { return options->tweak ? changeTweak(*options) : makeTweak(*options); });
}

}  // namespace tavlen::cli
