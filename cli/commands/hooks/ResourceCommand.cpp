#include <algorithm>
#include <memory>
#include <set>
#include <stdexcept>
#include <string>
#include <vector>

#include "cli/arguments/StoredItem.h"
#include "cli/commands/Commands.h"
#include "cli/items/StoreLock.h"
#include "cli/terminal/Console.h"
#include "cli/terminal/CountText.h"
#include "cli/terminal/Question.h"
#include "cli/terminal/ShownText.h"
#include "cli/terminal/TextTable.h"
#include "cli/tweaks/TweakForReading.h"
#include "cli/tweaks/TweakResources.h"
#include "tavlen/foundation/text/EscapedText.h"

namespace tavlen::cli {

namespace {

using Resources = std::vector<TweakResource>;

struct Options {
  std::string tweak;
  std::vector<std::string> names;
  bool isForced = false;
  bool isYes = false;
  bool isDryRun = false;
  bool json = false;
};

std::string usesText(const TweakResource& resource) {
  if (!resource.place) return isHiddenFile(resource.name) ? "" : "unused";
  if (resource.uses == 1) return *resource.place;
  return *resource.place + " and " + countText(resource.uses - 1, "other", "others");
}

int list(const Options& options) {
  const OpenedTweak tweak = tweakForReading(options.tweak);
  const Resources resources = resourcesOf(tweak.opened());
  if (options.json) {
    printJSON(resources);
    return 0;
  }
  TextTable table({"NAME", "BYTES", "USED BY"}, TextTable::LastColumn::whole);
  for (const TweakResource& resource : resources)
    table.addRow({resource.name, std::to_string(resource.size), usesText(resource)});
  if (!resources.empty()) printData(table.text());
  return 0;
}

/// Removes the files, and prints what was removed, or would be.
void removeAll(const TweakFile& tweak, const Resources& resources, const Options& options) {
  if (!options.isDryRun) {
    for (const TweakResource& resource : resources) removeResource(tweak, resource.name);
  }
  if (options.json) return printJSON(resources);
  const std::string verb = options.isDryRun ? "would remove " : "removed ";
  for (const TweakResource& resource : resources)
    printData(verb + escapedForTerminal(resource.name) + "\n");
}

/// The resources of those names. Throws for one that does not exist, or is in use.
Resources chosen(const Resources& all, const Options& options) {
  Resources resources;
  for (const std::string& name : std::set(options.names.begin(), options.names.end())) {
    const auto place =
        std::find_if(all.begin(), all.end(), [&](const auto& each) { return each.name == name; });
    if (place == all.end()) throw std::runtime_error("Resources/" + name + ": no such resource");
    if (place->place && !options.isForced) {
      throw std::runtime_error("Resources/" + name + ": is used by " + usesText(*place) +
                               "; use --force to remove it nevertheless");
    }
    resources.push_back(*place);
  }
  return resources;
}

int remove(const Options& options) {
  const TweakFile::Opened tweak = openedTweak(options.tweak);
  removeAll(*tweak.file, chosen(resourcesOf(tweak), options), options);
  return 0;
}

Resources unused(const TweakFile::Opened& tweak) {
  Resources resources = resourcesOf(tweak);
  std::erase_if(resources, [](const TweakResource& resource) {
    return resource.place || isHiddenFile(resource.name);
  });
  return resources;
}

/// Whether the user, who was asked without the lock, agreed to the removal of these files.
bool agrees(const Resources& resources) {
  if (resources.empty()) return true;
  std::string question;
  for (const TweakResource& resource : resources)
    question += escapedForTerminal(resource.name) + "\n";
  return isConfirmed(question + "Remove " +
                     countText(resources.size(), "unused resource", "unused resources") + "?");
}

int prune(const Options& options) {
  if (options.isDryRun) {
    const TweakFile::Opened tweak = openedTweak(options.tweak);
    removeAll(*tweak.file, unused(tweak), options);
    return 0;
  }
  const Resources shown = unused(openedTweak(options.tweak));
  if (!options.isYes && !agrees(shown)) {
    printNote("nothing is removed");
    return 1;
  }
  const StoreLock lock(options.tweak);
  const TweakFile::Opened tweak = openedTweak(options.tweak);
  std::set<std::string> names;
  for (const TweakResource& resource : shown) names.insert(resource.name);
  Resources now = unused(tweak);
  std::erase_if(now, [&](const TweakResource& each) { return !names.contains(each.name); });
  removeAll(*tweak.file, now, options);
  return 0;
}

Command addSubcommand(Command group, const char* name, const char* description, Options& options,
                      const char* tweakHelp = kTweakHelp) {
  Command command = group.addCommand(name, description);
  command.text("TWEAK", options.tweak, tweakHelp).required().notEmpty();
  return command;
}

void addRemovalOptions(Command command, Options& options) {
  command.flag("--dry-run", options.isDryRun, "Print what would change, and store nothing");
  command.flag("--json", options.json, "Print what was removed as a JSON array");
}

}  // namespace

void addResourceCommand(Command app) {
  Command group = app.addCommand("resource", "Show and remove the files that a tweak brings along");
  group.requireCommand();
  const auto options = std::make_shared<Options>();

  Command listing = addSubcommand(group, "list", "List the resources, and what uses them", *options,
                                  kReadTweakHelp);
  listing.flag("--json", options->json,
               "Print a JSON array with name, size, uses and the place of the first use");
  listing.run([options] { return list(*options); });

  Command removal = addSubcommand(group, "remove", "Remove resources", *options);
  removal.texts("NAME", options->names, "Their names, as list prints them").notEmpty();
  removal.flag("-f,--force", options->isForced, "Also remove those that are used");
  addRemovalOptions(removal, *options);
  runEdit(removal, options->tweak, [options] { return remove(*options); });

  Command pruning = addSubcommand(
      group, "prune", "Remove the resources that no value, code or script names", *options);
  pruning.flag("-y,--yes", options->isYes, "Do not ask on a terminal");
  addRemovalOptions(pruning, *options);
  pruning.run([options] { return prune(*options); });
}

}  // namespace tavlen::cli
