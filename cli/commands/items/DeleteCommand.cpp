#include <exception>
#include <memory>
#include <optional>
#include <set>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "cli/arguments/StoredItem.h"
#include "cli/commands/Commands.h"
#include "cli/items/ActiveTweak.h"
#include "cli/items/ItemRow.h"
#include "cli/items/StoreLock.h"
#include "cli/terminal/Question.h"
#include "cli/terminal/ShownText.h"
#include "tavlen/bundles/IPA.h"
#include "tavlen/items/TweaksDirectory.h"

namespace tavlen::cli {

namespace {

struct Options {
  std::vector<std::string> names;
  bool isYes = false;
  bool json = false;
};

/// An item to delete.
struct Deletion {
  std::string argument;  ///< as the user named it
  std::shared_ptr<TweakProtocol> item;
  ItemRow row;  ///< the item as it is before
};

/// The item that `name` names, even a broken one.
Deletion deletionOf(const std::string& name) {
  try {
    const OpenedItem opened = openedItem(name);
    const TweakConfiguration configuration = opened.configuration();
    ItemRow row = rowOf(*opened.item(), configuration);
    if (row.isInstalled) row.uninstalledFrom = configuration.bundleID();
    return {name, opened.item(), std::move(row)};
  } catch (const std::exception&) {
    const std::optional<BrokenItem> broken = brokenItem(name);
    if (!broken) throw;
    const std::optional<std::string> app = appWithActiveTweak(broken->item->id());
    ItemRow row = rowOf(*broken, app.has_value());
    row.uninstalledFrom = app;
    return {name, broken->item, std::move(row)};
  }
}

/// The items to delete, each once. Nothing is deleted yet if one of them cannot be.
std::vector<Deletion> deletionsOf(const std::vector<std::string>& names) {
  std::vector<Deletion> deletions;
  std::set<std::string> ids;
  for (const std::string& name : names) {
    Deletion deletion = deletionOf(name);
    if (!isInStore(*deletion.item)) {
      throw std::runtime_error(name + ": is not in " + TweaksDirectory::url().string());
    }
    if (ids.insert(deletion.item->id()).second) deletions.push_back(std::move(deletion));
  }
  return deletions;
}

/// "tweak Morning (6F9619FF-8B86-D011-B42D-00C04FC964FF)".
std::string textOf(const ItemRow& row) {
  const std::string id = escapedForTerminal(row.id.value_or(""));
  return row.kind + " " + (row.name ? escapedForTerminal(*row.name) + " (" + id + ")" : id);
}

std::string questionOf(const std::vector<Deletion>& deletions) {
  if (deletions.size() == 1) return "Delete the " + textOf(deletions.front().row) + "?";
  std::string question;
  for (const Deletion& deletion : deletions) question += textOf(deletion.row) + "\n";
  return question + "Delete these " + std::to_string(deletions.size()) + " items?";
}

/// Uninstalls the item `id` from `app`. Returns whether it is uninstalled, and warns if it is not.
bool isUninstalled(const std::string& name, const std::string& id, const std::string& app) {
  try {
    setActiveTweak(*IPA::findWithBundleID(app), nullptr);
  } catch (const std::exception&) {
    // Reported below. The item is deleted in any case.
  }
  if (!isActiveTweak(app, id)) return true;
  printWarning(name + ": could not be uninstalled from " + app);
  return false;
}

ItemRow deleteItem(const Deletion& deletion) {
  TweakProtocol& item = *deletion.item;
  ItemRow row = deletion.row;
  std::optional<std::string>& app = row.uninstalledFrom;
  if (app && !isUninstalled(deletion.argument, item.id(), *app)) app = std::nullopt;
  // Not before: uninstalling runs the file-operations helper.
  const StoreLock lock(deletion.argument);
  item.remove();
  announce(item, GenericTweakDiffMode::delete_);
  return row;
}

void printDeleted(const ItemRow& row) {
  printData("deleted " + textOf(row) +
            (row.uninstalledFrom ? ", uninstalled from " + *row.uninstalledFrom : "") + "\n");
}

int deleteItems(const Options& options) {
  const std::vector<Deletion> deletions = deletionsOf(options.names);
  if (!options.isYes && !isConfirmed(questionOf(deletions))) {
    printNote("nothing is deleted");
    return 1;
  }
  std::vector<ItemRow> rows;
  for (const Deletion& deletion : deletions) {
    try {
      rows.push_back(deleteItem(deletion));
    } catch (const std::exception&) {
      // What has been deleted until then is printed in any case.
      if (options.json) printData(shownJSON(rows) + "\n");
      throw;
    }
    if (!options.json) printDeleted(rows.back());
  }
  if (options.json) printData(shownJSON(rows) + "\n");
  return 0;
}

}  // namespace

void addDeleteCommand(Command app) {
  Command command =
      app.addCommand("delete", "Uninstall and delete tweaks and collections, even broken ones");
  const auto options = std::make_shared<Options>();
  command.texts("ITEM", options->names, kItemHelp).notEmpty();
  command.flag("-y,--yes", options->isYes, "Do not ask on a terminal");
  command.flag("--json", options->json, "Print what was deleted as a JSON array");
  command.run([options] { return deleteItems(*options); });
}

}  // namespace tavlen::cli
