#include <algorithm>
#include <compare>
#include <exception>
#include <filesystem>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <system_error>
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

/// A row of the output, which describes one item.
struct Row {
  std::string name;
  std::string kind;
  std::string bundleID;
  bool isInstalled = false;
  std::string id;

  static constexpr auto codedFields() {
    return std::tuple{requiredField("name", &Row::name), requiredField("kind", &Row::kind),
                      requiredField("bundleID", &Row::bundleID),
                      requiredField("installed", &Row::isInstalled),
                      requiredField("identifier", &Row::id)};
  }
};

std::vector<Row> readRows() {
  std::vector<ListedItem> items = TweakManager::listedTweaks();
  sortByName(items);
  // An app may have thousands of tweaks, but it has one record.
  std::map<std::string, std::optional<std::string>> activeIDs;
  std::vector<Row> rows;
  rows.reserve(items.size());
  for (const auto& [item, configuration] : items) {
    const std::string& bundleID = configuration.bundleID();
    const auto [active, isNew] = activeIDs.try_emplace(bundleID);
    if (isNew) active->second = activeTweakID(bundleID);
    rows.push_back({configuration.name(), kindOf(*item), bundleID, active->second == item->id(),
                    wellFormedUTF8(item->id())});
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

std::string table(const std::vector<Row>& rows) {
  TextTable table({"NAME", "KIND", "APP", "INSTALLED", "IDENTIFIER"});
  for (const Row& row : rows) {
    table.addRow({row.name, row.kind, row.bundleID, row.isInstalled ? "yes" : "", row.id});
  }
  return table.text();
}

int list(bool json) {
  const std::size_t entries = entryCount();
  const std::vector<Row> rows = readRows();
  if (!json && entries == 0) {
    printMessage("tavlen: nothing is stored in " +
                 escapedForTerminal(TweaksDirectory::url().native()) + "\n");
  }
  if (json) {
    printData(shownJSON(rows) + "\n");
  } else if (!rows.empty()) {
    printData(table(rows));
  }
  if (entries > rows.size()) {
    const std::size_t broken = entries - rows.size();
    printWarning(std::to_string(broken) + (broken == 1 ? " entry" : " entries") + " of " +
                 TweaksDirectory::url().string() + " cannot be opened and " +
                 (broken == 1 ? "is" : "are") + " left out");
  }
  return 0;
}

}  // namespace

void addListCommand(Command app) {
  Command command = app.addCommand("list", "List the stored tweaks and collections");
  const auto json = std::make_shared<bool>(false);
  command.flag("--json", *json, "Print a JSON array");
  command.run([json] { return list(*json); });
}

}  // namespace tavlen::cli
