#include <algorithm>
#include <compare>
#include <exception>
#include <filesystem>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <system_error>
#include <utility>
#include <vector>

#include "cli/arguments/StoredItem.h"
#include "cli/commands/Commands.h"
#include "cli/terminal/Console.h"
#include "cli/terminal/ShownText.h"
#include "cli/terminal/TextTable.h"
#include "cli/work/ActiveTweak.h"
#include "tavlen/foundation/text/EscapedText.h"
#include "tavlen/foundation/text/TextComparison.h"
#include "tavlen/foundation/text/Unicode.h"
#include "tavlen/items/TweaksDirectory.h"
#include "tavlen/store/TweakManager.h"

namespace tavlen::cli {

namespace {

/// A row of the output, which describes one item. A broken one has an error, but no name and no
/// app.
struct Row {
  std::optional<std::string> name;
  std::string kind;
  std::optional<std::string> bundleID;
  bool isInstalled = false;
  std::string id;
  std::optional<std::string> error;

  static constexpr auto codedFields() {
    return std::tuple{
        optionalField("name", &Row::name),         requiredField("kind", &Row::kind),
        optionalField("bundleID", &Row::bundleID), requiredField("installed", &Row::isInstalled),
        requiredField("identifier", &Row::id),     optionalField("error", &Row::error)};
  }
};

void addIntactRows(std::vector<Row>& rows, std::vector<ListedItem> items) {
  sortByName(items);
  // An app may have thousands of tweaks, but it has one record.
  std::map<std::string, std::optional<std::string>> activeIDs;
  for (const auto& [item, configuration] : items) {
    const std::string& bundleID = configuration.bundleID();
    const auto [active, isNew] = activeIDs.try_emplace(bundleID);
    if (isNew) active->second = activeTweakID(bundleID);
    rows.push_back({configuration.name(),
                    kindOf(*item),
                    bundleID,
                    active->second == item->id(),
                    wellFormedUTF8(item->id()),
                    {}});
  }
}

void addBrokenRows(std::vector<Row>& rows, std::vector<BrokenItem> items) {
  std::sort(items.begin(), items.end(),
            [](const auto& left, const auto& right) { return left.item->id() < right.item->id(); });
  for (const auto& [item, error, configuration] : items) {
    const std::string id = item->id();
    rows.push_back({{},
                    kindOf(*item),
                    {},
                    appWithActiveTweak(id).has_value(),
                    wellFormedUTF8(id),
                    wellFormedUTF8(error)});
  }
}

std::vector<Row> readRows() {
  std::vector<BrokenItem> broken;
  std::vector<ListedItem> intact = TweakManager::listedTweaks(broken);
  std::vector<Row> rows;
  rows.reserve(intact.size() + broken.size());
  addIntactRows(rows, std::move(intact));
  addBrokenRows(rows, std::move(broken));
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

std::string table(const std::vector<Row>& rows) {
  TextTable table({"NAME", "KIND", "APP", "INSTALLED", "IDENTIFIER", "ERROR"},
                  TextTable::LastColumn::whole);
  for (const Row& row : rows) {
    table.addRow({row.name.value_or("-"), row.kind, row.bundleID.value_or("-"),
                  row.isInstalled ? "yes" : "", row.id, row.error.value_or("")});
  }
  return table.text();
}

int list(bool json) {
  const std::size_t entries = entryCount();
  const std::vector<Row> rows = readRows();
  if (!json && entries == 0) {
    printNote("nothing is stored in " + TweaksDirectory::url().string());
  }
  if (json) {
    printData(shownJSON(rows) + "\n");
  } else if (!rows.empty()) {
    printData(table(rows));
  }
  if (entries > rows.size()) {
    const std::size_t others = entries - rows.size();
    printWarning(std::to_string(others) + (others == 1 ? " entry" : " entries") + " of " +
                 TweaksDirectory::url().string() + " " +
                 (others == 1 ? "is not an item and is" : "are not items and are") + " left out");
  }
  return 0;
}

}  // namespace

void addListCommand(Command app) {
  Command command = app.addCommand("list", "List the stored tweaks and collections");
  const auto json = std::make_shared<bool>(false);
  command.flag("--json", *json,
               "Print a JSON array; a broken item has the key error, but no name and no bundleID");
  command.run([json] { return list(*json); });
}

}  // namespace tavlen::cli
