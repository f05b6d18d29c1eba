#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <variant>

#include "cli/arguments/AppArgument.h"
#include "cli/arguments/LookOptions.h"
#include "cli/arguments/StoredItem.h"
#include "cli/classes/AppForReading.h"
#include "cli/commands/Commands.h"
#include "cli/items/AppChange.h"
#include "cli/items/ItemNames.h"
#include "cli/items/ItemRow.h"
#include "cli/items/StoreLock.h"
#include "cli/terminal/ShownText.h"
#include "tavlen/items/TweakError.h"

namespace tavlen::cli {

namespace {

struct Options {
  std::string item;
  std::optional<std::string> name;
  std::optional<std::string> app;
  Look look;
  bool json = false;
};

/// Throws unless all members of a collection are for the app `bundleID`: others could not be
/// installed with it.
void checkMembers(const TweakCollection::Manifest& manifest, const std::string& bundleID) {
  for (const TweakFile::Opened& member : manifest.openedTweaks()) {
    const auto& found = member.manifest.configuration;
    if (found.bundleID == bundleID) continue;
    throw std::runtime_error("its member " + found.name + ": " +
                             errorText(TweakError::bundleIDMismatch(bundleID, found.bundleID)));
  }
}

/// Opens the item, and throws if it cannot be set so.
OpenedItem checkedItem(const Options& options, const std::optional<std::string>& bundleID) {
  OpenedItem item = openedItem(options.item);
  if (options.name) requireNameFor(item, *options.name);
  if (bundleID && item.collection() != nullptr) {
    try {
      checkMembers(item.collection()->manifest, *bundleID);
    } catch (const std::runtime_error& error) {
      throw std::runtime_error(options.item + ": " + error.what());
    }
  }
  return item;
}

/// Changes the settings by one write.
void store(OpenedItem& item, const Options& options, const std::optional<std::string>& bundleID) {
  const auto change = [&](auto& opened) {
    auto& configuration = opened.manifest.configuration;
    configuration.name = options.name.value_or(configuration.name);
    configuration.bundleID = bundleID.value_or(configuration.bundleID);
    configuration.color = options.look.color.value_or(configuration.color);
    if (options.look.glyph) configuration.setGlyph(*options.look.glyph);
    opened.file->setManifest(opened.manifest);
  };
  std::visit(change, item);
}

int set(const Options& options) {
  const std::optional<std::string> bundleID =
      options.app ? std::optional(targetBundleID(*options.app)) : std::nullopt;
  // Checked before the helper runs, and once more under the lock.
  const OpenedItem before = checkedItem(options, bundleID);
  if (bundleID) takeAway(before, *bundleID);
  const StoreLock lock(options.item);
  OpenedItem item = checkedItem(options, bundleID);
  store(item, options, bundleID);
  if (bundleID) {
    warnIfNotInstalled(*bundleID);
    if (item.tweak() != nullptr) warnOfCollections(item.item()->id(), *bundleID);
  }
  if (options.json) printRow(item);
  return 0;
}

}  // namespace

void addSetCommand(Command app) {
  Command command =
      app.addCommand("set", "Change the name, the app or the look of a tweak or a collection");
  const auto options = std::make_shared<Options>();
  command.text("ITEM", options->item, kItemHelp).required().notEmpty();
  Command changes = command.addGroup("CHANGES", "What to change", 1, 0);
  changes.text("--name", options->name, "The new name").notEmpty().utf8().typeName("NAME");
  changes.text("--app", options->app, kReadAppHelp).notEmpty().utf8().typeName("APP|FILE");
  addLookOptions(changes, options->look);
  command.flag("--json", options->json, "Print the item as a JSON object");
  command.run([options] { return set(*options); });
}

}  // namespace tavlen::cli
