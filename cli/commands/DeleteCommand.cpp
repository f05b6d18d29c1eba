#include <filesystem>
#include <memory>
#include <stdexcept>
#include <string>
#include <system_error>

#include "cli/arguments/StoredItem.h"
#include "cli/commands/Commands.h"
#include "cli/terminal/Console.h"
#include "cli/work/ActiveTweak.h"
#include "cli/work/StoreLock.h"
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

int deleteItem(const std::string& name) {
  const OpenedItem opened = openedItem(name);
  const std::shared_ptr<TweakProtocol> item = opened.item();
  if (!isInStore(*item)) {
    throw std::runtime_error(name + ": is not in " + TweaksDirectory::url().string());
  }
  const std::string bundleID = opened.configuration().bundleID();
  const bool isInstalled = isActiveTweak(bundleID, item->id());
  if (isInstalled) {
    tellThatNothingRuns();
    item->uninstall();
  }
  if (isInstalled && isActiveTweak(bundleID, item->id())) {
    printWarning(name + ": could not be uninstalled from " + bundleID);
  }
  // Not before: uninstalling runs the file-operations helper.
  const StoreLock lock(name);
  item->remove();
  announce(*item, GenericTweakDiffMode::delete_);
  return 0;
}

}  // namespace

void addDeleteCommand(Command app) {
  Command command =
      app.addCommand("delete", "Uninstall a stored tweak or collection and delete it");
  const auto name = std::make_shared<std::string>();
  command.text("ITEM", *name, kItemHelp).required().notEmpty();
  command.run([name] { return deleteItem(*name); });
}

}  // namespace tavlen::cli
