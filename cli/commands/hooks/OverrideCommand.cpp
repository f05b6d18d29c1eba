#include <algorithm>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "cli/arguments/AppArgument.h"
#include "cli/arguments/ListPlace.h"
#include "cli/arguments/OverrideValue.h"
#include "cli/arguments/StoredItem.h"
#include "cli/arguments/WithPlace.h"
#include "cli/commands/Commands.h"
#include "cli/items/StoreLock.h"
#include "cli/terminal/Console.h"
#include "cli/terminal/ShownText.h"
#include "cli/terminal/TextTable.h"
#include "cli/tweaks/TweakForReading.h"
#include "tavlen/tweaks/Manifest.h"

namespace tavlen::cli {

namespace {

struct Options {
  std::string tweak;
  std::string kind;
  std::optional<std::string> value;
  std::string to;
  bool json = false;
};

using Boxes = std::vector<OverrideContainer>;

auto isOf(const std::string& kind) {
  return [&kind](const OverrideContainer& box) { return identifierOf(box.value) == kind; };
}

/// Calls `change` with the tweak's manifest and its overrides, stores the result, and prints the
/// override that `change` returns if JSON was asked for. Errors name the tweak and the kind.
template <class Change>
void editOverrides(const Options& options, Change change) {
  TweakFile::Opened tweak = openedTweak(options.tweak);
  const OverrideContainer changed = withPlace(options.tweak + ": " + options.kind, [&] {
    OverrideContainer result = change(tweak.manifest, tweak.manifest._overrides);
    tweak.file->setManifest(tweak.manifest);
    return result;
  });
  if (options.json) printJSON(changed);
}

/// An override with the current value of the tweak's app.
Override ownValue(const std::string& kind, const TweakFile::Manifest& manifest) {
  const auto app = appWithBundleID(manifest.configuration.bundleID);
  return overrideKind(kind).withInfo(app->infoManager().info());
}

Boxes::iterator requireKind(Boxes& boxes, const std::string& kind) {
  const auto found = std::find_if(boxes.begin(), boxes.end(), isOf(kind));
  if (found == boxes.end()) throw std::runtime_error("the tweak has no such override");
  return found;
}

Action addAction(const Options& options) {
  std::optional<Override> value;
  if (options.value) value = parseOverride(options.kind, *options.value);
  return [options, value] {
    editOverrides(options, [&](const TweakFile::Manifest& manifest, Boxes& boxes) {
      if (std::any_of(boxes.begin(), boxes.end(), isOf(options.kind)))
        throw std::runtime_error("the tweak already has such an override; use set to change it");
      return boxes.emplace_back(
          OverrideContainer{value ? *value : ownValue(options.kind, manifest)});
    });
    return 0;
  };
}

Action setAction(const Options& options) {
  const Override value = parseOverride(options.kind, options.value.value_or(""));
  return [options, value] {
    editOverrides(options, [&](const TweakFile::Manifest& /*manifest*/, Boxes& boxes) {
      const auto found = requireKind(boxes, options.kind);
      found->value = value;
      // A manifest may contain several overrides of a kind, and the last one wins.
      boxes.erase(std::remove_if(found + 1, boxes.end(), isOf(options.kind)), boxes.end());
      return OverrideContainer{value};
    });
    return 0;
  };
}

Action removeAction(const Options& options) {
  return [options] {
    editOverrides(options, [&](const TweakFile::Manifest& /*manifest*/, Boxes& boxes) {
      OverrideContainer removed = *requireKind(boxes, options.kind);
      std::erase_if(boxes, isOf(options.kind));
      return removed;
    });
    return 0;
  };
}

Action moveAction(const Options& options) {
  const ListPlace to = parseListPlace(options.to, "TO");
  return [options, to] {
    editOverrides(options, [&](const TweakFile::Manifest& /*manifest*/, Boxes& boxes) {
      const auto found = requireKind(boxes, options.kind);
      OverrideContainer moved = *found;
      moveItem(boxes, static_cast<std::size_t>(found - boxes.begin()), indexOf(to, boxes.size()));
      return moved;
    });
    return 0;
  };
}

std::string table(const Boxes& boxes) {
  TextTable table({"KIND", "TITLE", "VALUE"}, TextTable::LastColumn::whole);
  for (const OverrideContainer& box : boxes) {
    table.addRow(
        {std::string(identifierOf(box.value)), localizedName(box.value), overrideText(box.value)});
  }
  return table.text();
}

int printList(const Options& options) {
  const Boxes boxes = tweakForReading(options.tweak).manifest._overrides;
  if (options.json) {
    printData(shownJSON(boxes) + "\n");
  } else if (!boxes.empty()) {
    printData(table(boxes));
  }
  return 0;
}

/// Adds a subcommand of `override` with the argument TWEAK.
Command addTo(Command group, const char* name, const char* help,
              const std::shared_ptr<Options>& options, const char* tweakHelp = kTweakHelp) {
  Command command = group.addCommand(name, help);
  command.text("TWEAK", options->tweak, tweakHelp).required().notEmpty();
  return command;
}

/// The same for one that edits. `make` checks the arguments, throws UsageError for malformed ones,
/// and returns the action.
Command addEditTo(Command group, const char* name, const char* help,
                  const std::shared_ptr<Options>& options, Action (*make)(const Options&)) {
  Command command = addTo(group, name, help, options);
  command.flag("--json", options->json, "Print the override as a JSON object");
  prepareEdit(command, options->tweak, [options, make] { return make(*options); });
  return command;
}

void addKind(Command command, const std::shared_ptr<Options>& options) {
  command
      .text(
          "KIND", [options](const std::string& text) { options->kind = overrideKindNamed(text); },
          "The kind of override, or its title as shown by override list: " + overrideKinds())
      .required();
}

}  // namespace

void addOverrideCommand(Command app) {
  Command group = app.addCommand("override", "List and edit a tweak's overrides of Info.plist");
  group.requireCommand();

  auto options = std::make_shared<Options>();
  Command add =
      addEditTo(group, "add", "Add an override; without VALUE, of the app's current value", options,
                addAction);
  addKind(add, options);
  add.text("VALUE", options->value, kOverrideValueHelp);

  options = std::make_shared<Options>();
  Command set = addEditTo(group, "set", "Change an override", options, setAction);
  addKind(set, options);
  set.text("VALUE", options->value, kOverrideValueHelp).required();

  options = std::make_shared<Options>();
  addKind(addEditTo(group, "remove", "Remove an override", options, removeAction), options);

  options = std::make_shared<Options>();
  Command move = addEditTo(group, "move", "Move an override; of several of a kind, the last counts",
                           options, moveAction);
  addKind(move, options);
  move.text("TO", options->to, kListPlaceHelp).required();

  options = std::make_shared<Options>();
  Command list = addTo(group, "list", "List the overrides", options, kReadTweakHelp);
  list.flag("--json", options->json, "Print a JSON array in the form of the manifest");
  list.run([options] { return printList(*options); });
}

}  // namespace tavlen::cli
