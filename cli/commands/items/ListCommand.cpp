#include <algorithm>
#include <filesystem>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <system_error>
#include <utility>
#include <vector>

#include "cli/commands/Commands.h"
#include "cli/items/ActiveTweak.h"
#include "cli/items/ItemRow.h"
#include "cli/terminal/Console.h"
#include "cli/terminal/ShownText.h"
#include "cli/terminal/TextTable.h"
#include "tavlen/items/TweaksDirectory.h"
#include "tavlen/store/TweakManager.h"

namespace tavlen::cli {

namespace {

/// The active items by the bundle identifiers of their apps.
using Records = std::map<std::string, std::string>;

void addIntactRows(std::vector<ItemRow>& rows, std::vector<ListedItem> items,
                   const Records& records) {
  sortByName(items);
  for (const auto& [item, configuration] : items) {
    const auto record = records.find(configuration.bundleID());
    const bool isInstalled = record != records.end() && record->second == item->id();
    rows.push_back(rowOf(*item, configuration, isInstalled));
  }
}

void addBrokenRows(std::vector<ItemRow>& rows, std::vector<BrokenItem> items,
                   const std::set<std::string>& active) {
  std::sort(items.begin(), items.end(),
            [](const auto& left, const auto& right) { return left.item->id() < right.item->id(); });
  for (const BrokenItem& item : items) {
    rows.push_back(rowOf(item, active.contains(item.item->id())));
  }
}

/// The stored items, and then those that are installed, but not stored.
std::vector<ItemRow> readRows(std::size_t& stored) {
  std::vector<BrokenItem> broken;
  std::vector<ListedItem> intact = TweakManager::listedTweaks(broken);
  const Records records = activeTweakIDs();
  std::set<std::string> elsewhere;
  for (const auto& [bundleID, id] : records) elsewhere.insert(id);
  std::vector<ItemRow> rows;
  addIntactRows(rows, std::move(intact), records);
  addBrokenRows(rows, std::move(broken), elsewhere);
  stored = rows.size();
  for (const ItemRow& row : rows) elsewhere.erase(row.id.value_or(""));
  for (const auto& [bundleID, id] : records) {
    if (elsewhere.contains(id)) rows.push_back(rowOfRecord(id, bundleID));
  }
  return rows;
}

/// The number of entries in the store; 0 if it does not exist yet.
std::size_t entryCount() {
  std::error_code error;
  const std::filesystem::path store = TweaksDirectory::url();
  std::size_t count = 0;
  std::filesystem::directory_iterator entry(store, error);
  if (error == std::errc::no_such_file_or_directory) return 0;
  for (; !error && entry != std::filesystem::directory_iterator(); entry.increment(error)) {
    // Hidden entries are temporary files or belong to the system, not to the user.
    if (!entry->path().filename().native().starts_with('.')) ++count;
  }
  if (error) throw std::system_error(error, store.string());
  return count;
}

std::string table(const std::vector<ItemRow>& rows) {
  TextTable table({"NAME", "KIND", "APP", "INSTALLED", "IDENTIFIER", "NOTE"},
                  TextTable::LastColumn::whole);
  for (const ItemRow& row : rows) {
    table.addRow({row.name.value_or("-"), row.kind, row.bundleID.value_or("-"),
                  row.isInstalled ? "yes" : "", row.id.value_or(""),
                  row.isStored ? row.error.value_or("") : "not stored"});
  }
  return table.text();
}

int list(bool json) {
  const std::size_t entries = entryCount();
  std::size_t items = 0;
  const std::vector<ItemRow> rows = readRows(items);
  if (!json && entries == 0) {
    printNote("nothing is stored in " + TweaksDirectory::url().string());
  }
  if (json) {
    printData(shownJSON(rows) + "\n");
  } else if (!rows.empty()) {
    printData(table(rows));
  }
  if (entries > items) {
    const std::size_t rest = entries - items;
    printWarning(std::to_string(rest) + (rest == 1 ? " entry" : " entries") + " of " +
                 TweaksDirectory::url().string() + " " +
                 (rest == 1 ? "is not an item and is" : "are not items and are") + " left out");
  }
  return 0;
}

}  // namespace

void addListCommand(Command app) {
  Command command =
      app.addCommand("list", "List the stored tweaks and collections, and what else is installed");
  const auto json = std::make_shared<bool>(false);
  command.flag("--json", *json,
               "Print a JSON array; a broken item has the key error, but no name and no bundleID");
  command.run([json] { return list(*json); });
}

}  // namespace tavlen::cli
