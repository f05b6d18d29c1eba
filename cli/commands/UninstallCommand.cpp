#include <memory>
#include <stdexcept>
#include <string>

#include "cli/arguments/AppArgument.h"
#include "cli/arguments/StoredItem.h"
#include "cli/commands/Commands.h"
#include "cli/work/ActiveTweak.h"

namespace tavlen::cli {

namespace {

int uninstallItem(const std::string& name) {
  const OpenedItem opened = openedItem(name);
  const std::shared_ptr<IPA> ipa = IPA::findWithBundleID(opened.configuration().bundleID());
  if (ipa->activeTweakID() != opened.item()->id())
    throw std::runtime_error(name + ": is not installed");
  setActiveTweak(*ipa, nullptr);
  return 0;
}

int uninstallFrom(const std::string& app) {
  const std::shared_ptr<IPA> ipa = appArgument(app);
  if (!ipa->activeTweakID()) throw std::runtime_error(app + ": no tweak is installed");
  setActiveTweak(*ipa, nullptr);
  return 0;
}

}  // namespace

void addUninstallCommand(Command app) {
  Command command = app.addCommand("uninstall", "Uninstall the active tweak of an app");
  const auto name = std::make_shared<std::string>();
  const auto appName = std::make_shared<std::string>();
  Command which = command.addGroup("WHICH", "The item to uninstall", 1, 1);
  which.text("ITEM", *name, kItemHelp).notEmpty();
  which.text("--app", *appName, "The active tweak of that app, even if it is not stored")
      .notEmpty()
      .typeName("APP");
  command.run(
      [name, appName] { return name->empty() ? uninstallFrom(*appName) : uninstallItem(*name); });
}

}  // namespace tavlen::cli
