#include <memory>
#include <optional>
#include <stdexcept>
#include <string>

#include "cli/arguments/AppArgument.h"
#include "cli/arguments/StoredItem.h"
#include "cli/commands/Commands.h"
#include "cli/items/ActiveTweak.h"
#include "cli/items/ItemRow.h"
#include "cli/terminal/ShownText.h"

namespace tavlen::cli {

namespace {

struct Options {
  std::string item;
  std::string app;
  bool json = false;
};

/// Uninstalls the active item of `ipa`, which `row` describes.
int uninstall(IPA& ipa, ItemRow row, bool json) {
  setActiveTweak(ipa, nullptr);
  row.isInstalled = false;
  if (json) printData(shownJSON(row) + "\n");
  return 0;
}

int uninstallItem(const Options& options) {
  const OpenedItem opened = openedItem(options.item);
  const TweakConfiguration configuration = opened.configuration();
  const std::shared_ptr<IPA> ipa = appWithBundleID(configuration.bundleID());
  if (ipa->activeTweakID() != opened.item()->id())
    throw std::runtime_error(options.item + ": is not installed");
  return uninstall(*ipa, rowOf(*opened.item(), configuration, true), options.json);
}

int uninstallFrom(const Options& options) {
  const std::shared_ptr<IPA> ipa = appArgument(options.app);
  const std::optional<std::string> id = ipa->activeTweakID();
  if (!id) throw std::runtime_error(options.app + ": no tweak is installed");
  return uninstall(*ipa, rowOfInstalled(*id, readInfo(*ipa).bundleID), options.json);
}

}  // namespace

void addUninstallCommand(Command app) {
  Command command = app.addCommand("uninstall", "Uninstall the active tweak of an app");
  const auto options = std::make_shared<Options>();
  Command which = command.addGroup("WHICH", "The item to uninstall", 1, 1);
  which.text("ITEM", options->item, kItemHelp).notEmpty();
  which.text("--app", options->app, "The active tweak of that app, even if it is not stored")
      .notEmpty()
      .typeName("APP");
  command.flag("--json", options->json, "Print the item as a JSON object");
  command.run([options] {
    return options->item.empty() ? uninstallFrom(*options) : uninstallItem(*options);
  });
}

}  // namespace tavlen::cli
