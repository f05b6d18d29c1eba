#include <exception>
#include <memory>
#include <optional>
#include <set>
#include <stdexcept>
#include <string>
#include <tuple>
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
#include "tavlen/foundation/text/Unicode.h"
#include "tavlen/items/TweaksDirectory.h"

namespace tavlen::cli {

namespace {

struct Options {
  std::vector<std::string> names;
  bool isYes = false;
  bool json = false;
};

/// A row of the output, which describes one deleted item.
struct Row {
  std::optional<std::string> name;  ///< nothing for a broken item
  std::string kind;
  std::string id;
  std::optional<std::string> app;  ///< the app that it was uninstalled from

  static constexpr auto codedFields() {
    return std::tuple{optionalField("name", &Row::name), requiredField("kind", &Row::kind),
                      requiredField("identifier", &Row::id),
                      optionalField("uninstalledFrom", &Row::app)};
  }
};

/// An item to delete.
struct Deletion {
  std::string argument;  ///< as the user named it
  std::shared_ptr<TweakProtocol> item;
  Row row;
};

/// The item that `name` names, even a broken one.
Deletion deletionOf(const std::string& name) {
  try {
    const OpenedItem opened = openedItem(name);
    const TweakConfiguration configuration = opened.configuration();
    const std::shared_ptr<TweakProtocol> item = opened.item();
    const std::string& bundleID = configuration.bundleID();
    const bool isInstalled = isActiveTweak(bundleID, item->id());
    return {name,
            item,
            {configuration.name(), kindOf(*item), wellFormedUTF8(item->id()),
             isInstalled ? std::optional(bundleID) : std::nullopt}};
  } catch (const std::exception&) {
    const std::optional<BrokenItem> broken = brokenItem(name);
    if (!broken) throw;
    const TweakProtocol& item = *broken->item;
    return {name,
            broken->item,
            {{}, kindOf(item), wellFormedUTF8(item.id()), appWithActiveTweak(item.id())}};
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
std::string textOf(const Row& row) {
  const std::string id = escapedForTerminal(row.id);
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

Row deleteItem(const Deletion& deletion) {
  TweakProtocol& item = *deletion.item;
  Row row = deletion.row;
  if (row.app && !isUninstalled(deletion.argument, item.id(), *row.app)) row.app = std::nullopt;
  // Not before: uninstalling runs the file-operations helper.
  const StoreLock lock(deletion.argument);
  item.remove();
  announce(item, GenericTweakDiffMode::delete_);
  return row;
}

void printDeleted(const Row& row) {
  printData("deleted " + textOf(row) + (row.app ? ", uninstalled from " + *row.app : "") + "\n");
}

int deleteItems(const Options& options) {
  const std::vector<Deletion> deletions = deletionsOf(options.names);
  if (!options.isYes && !isConfirmed(questionOf(deletions))) {
    printNote("nothing is deleted");
    return 1;
  }
  std::vector<Row> rows;
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
