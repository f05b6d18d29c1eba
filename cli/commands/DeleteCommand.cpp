#include <exception>
#include <filesystem>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <system_error>

#include "cli/arguments/StoredItem.h"
#include "cli/commands/Commands.h"
#include "cli/terminal/Console.h"
#include "cli/work/ActiveTweak.h"
#include "cli/work/StoreLock.h"
#include "tavlen/bundles/IPA.h"
#include "tavlen/items/TweaksDirectory.h"

namespace tavlen::cli {

namespace {

/// Whether the item lies in the store. The user may give any path, but this command deletes only
/// stored items.
bool isInStore(const TweakProtocol& item) {
  std::error_code ignored;
  return std::filesystem::equivalent(std::filesystem::absolute(item.url()).parent_path(),
                                     TweaksDirectory::url(), ignored);
}

/// An item to delete, and the app for which it is installed, if any.
struct Deletion {
  std::shared_ptr<TweakProtocol> item;
  std::optional<std::string> app;
};

/// The item that `name` names, even a broken one.
Deletion deletionOf(const std::string& name) {
  try {
    const OpenedItem opened = openedItem(name);
    const std::string bundleID = opened.configuration().bundleID();
    const bool isInstalled = isActiveTweak(bundleID, opened.item()->id());
    return {opened.item(), isInstalled ? std::optional(bundleID) : std::nullopt};
  } catch (const std::exception&) {
    const std::optional<BrokenItem> broken = brokenItem(name);
    if (!broken) throw;
    return {broken->item, appWithActiveTweak(broken->item->id())};
  }
}

/// Uninstalls the item `id` from `app`, and warns if that fails.
void uninstall(const std::string& name, const std::string& id, const std::string& app) {
  try {
    setActiveTweak(*IPA::findWithBundleID(app), nullptr);
  } catch (const std::exception&) {
    // Reported below. The item is deleted in any case.
  }
  if (isActiveTweak(app, id)) printWarning(name + ": could not be uninstalled from " + app);
}

int deleteItem(const std::string& name) {
  const auto [item, app] = deletionOf(name);
  if (!isInStore(*item)) {
    throw std::runtime_error(name + ": is not in " + TweaksDirectory::url().string());
  }
  if (app) uninstall(name, item->id(), *app);
  // Not before: uninstalling runs the file-operations helper.
  const StoreLock lock(name);
  item->remove();
  announce(*item, GenericTweakDiffMode::delete_);
  return 0;
}

}  // namespace

void addDeleteCommand(Command app) {
  Command command =
      app.addCommand("delete", "Uninstall and delete a tweak or a collection, even a broken one");
  const auto name = std::make_shared<std::string>();
  command.text("ITEM", *name, kItemHelp).required().notEmpty();
  command.run([name] { return deleteItem(*name); });
}

}  // namespace tavlen::cli
