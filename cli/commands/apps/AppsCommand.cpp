#include <exception>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "cli/arguments/AppArgument.h"
#include "cli/commands/Commands.h"
#include "cli/terminal/Console.h"
#include "cli/terminal/ShownText.h"
#include "cli/terminal/TextTable.h"
#include "tavlen/bundles/InfoManager.h"
#include "tavlen/device/DeviceRoot.h"
#include "tavlen/device/DirectoryAppListFetcher.h"
#include "tavlen/device/InstalledRecords.h"
#include "tavlen/foundation/base/FunctionRef.h"
#include "tavlen/foundation/plist/PropertyListDecoder.h"
#include "tavlen/foundation/text/EscapedText.h"
#include "tavlen/foundation/text/NameSort.h"
#include "tavlen/foundation/text/Unicode.h"

namespace tavlen::cli {

namespace {

/// A row of the output, which describes one app.
struct Row {
  std::string name;
  std::string bundleID;
  std::optional<std::string> version;
  std::optional<std::string> activeTweak;
  std::string path;
  /// A problem in its Info.plist, if any.
  std::optional<std::string> note;

  static constexpr auto codedFields() {
    return std::tuple{
        requiredField("name", &Row::name),       requiredField("bundleID", &Row::bundleID),
        optionalField("version", &Row::version), optionalField("activeTweak", &Row::activeTweak),
        requiredField("path", &Row::path),       optionalField("note", &Row::note)};
  }
};

Row rowOf(const AppListApp& app, FunctionRef<Info()> info) {
  Row row;
  row.name = app.displayName;
  row.bundleID = app.bundleID;
  row.path = wellFormedUTF8(app.bundle.native());
  try {
    row.version = info().version();
  } catch (const std::exception& error) {
    row.note = "Info.plist: " + errorText(error);
  }
  if (const auto record = InstalledRecords::record(app.bundleID)) row.activeTweak = record->tweakID;
  return row;
}

Info decodeInfo(const PropertyList& list) {
  Info info;
  PropertyListDecoder decoder(list);
  decode(decoder, info);
  return info;
}

/// Opens each app's Info.plist once. In a device tree it has already been read, to find out whether
/// a bundle is an app.
std::vector<Row> readRows() {
  std::vector<Row> rows;
  if (DeviceRoot::shared().isDevice()) {
    for (const AppListApp& app : fetchedApps()) {
      rows.push_back(rowOf(app, [&] { return InfoManager(app.bundle).info(); }));
    }
  } else {
    DirectoryAppListFetcher(DeviceRoot::shared())
        .visitAllApps([&](const AppListApp& app, const PropertyList& list) {
          rows.push_back(rowOf(app, [&] { return decodeInfo(list); }));
        });
  }
  return rows;
}

void sortByName(std::vector<Row>& rows) {
  sortByLocalizedName(
      rows, [](const Row& row) -> const std::string& { return row.name; },
      [](const Row&, const Row&) { return false; });
}

std::string table(const std::vector<Row>& rows) {
  TextTable table({"NAME", "IDENTIFIER", "VERSION", "ACTIVE TWEAK", "NOTE"});
  for (const Row& row : rows) {
    table.addRow({row.name, row.bundleID, row.version.value_or("-"), row.activeTweak.value_or(""),
                  row.note.value_or("")});
  }
  return table.text();
}

}  // namespace

void addAppsCommand(Command app) {
  Command command = app.addCommand("apps", "List the apps for which tweaks can be made");
  const auto json = std::make_shared<bool>(false);
  command.flag("--json", *json, "Print a JSON array");
  command.run([json] {
    std::vector<Row> rows = readRows();
    sortByName(rows);
    if (!*json && rows.empty())
      printNote("no apps in the device root " + DeviceRoot::shared().url().string() +
                "; --root names a device tree");
    if (*json || !rows.empty()) printData(*json ? shownJSON(rows) + "\n" : table(rows));
    return 0;
  });
}

}  // namespace tavlen::cli
