#include "cli/arguments/AmbiguousItem.h"

#include <sys/stat.h>

#include <algorithm>
#include <array>
#include <ctime>
#include <filesystem>
#include <utility>
#include <vector>

#include "cli/terminal/Diagnostic.h"
#include "cli/terminal/ReportedError.h"
#include "cli/terminal/TextTable.h"
#include "tavlen/device/DeviceRoot.h"
#include "tavlen/device/InstalledRecords.h"

namespace tavlen::cli {

namespace {

/// When the item's document was changed, in local time; empty if that is unknown.
std::string dateOf(const OpenedItem& item) {
  std::filesystem::path document = DeviceRoot::shared().follow(item.item()->url());
  if (item.tweak() != nullptr) document /= "Manifest.json";
  struct stat status {};
  std::tm time{};
  if (::stat(document.c_str(), &status) != 0 || ::localtime_r(&status.st_mtime, &time) == nullptr)
    return "";
  std::array<char, 32> text{};
  return {text.data(), std::strftime(text.data(), text.size(), "%Y-%m-%d %H:%M", &time)};
}

bool isInstalled(const std::string& id, const std::string& app) {
  const auto record = InstalledRecords::record(app);
  return record && record->tweakID == id;
}

std::string table(const FoundItems& found) {
  std::vector<std::vector<std::string>> rows;
  for (const OpenedItem& each : found.items) {
    const TweakConfiguration settings = each.configuration();
    const std::string id = each.item()->id();
    rows.push_back({id, settings.name(), settings.bundleID(), dateOf(each),
                    isInstalled(id, settings.bundleID()) ? "yes" : ""});
  }
  for (const std::string& id : found.broken) rows.push_back({id, "(broken)", "", "", ""});
  std::sort(rows.begin(), rows.end());
  TextTable table({"IDENTIFIER", "NAME", "APP", "CHANGED", "INSTALLED"});
  for (const std::vector<std::string>& row : rows) table.addRow(row);
  return table.text();
}

}  // namespace

void refuseAmbiguous(const std::string& text, const FoundItems& found) {
  const bool isName = !found.items.empty() && found.items.front().configuration().name() == text;
  std::string message =
      text + (isName ? ": several items have that name; name one by its identifier"
                     : ": several identifiers begin like that; write more of one");
  if (hasJSONMessages()) {
    std::string separator = ": ";
    for (const OpenedItem& each : found.items) {
      message += std::exchange(separator, ", ") + each.item()->id();
    }
    for (const std::string& id : found.broken) message += std::exchange(separator, ", ") + id;
  }
  print({.severity = Diagnostic::kError, .message = message, .excerpt = table(found)});
  throw ReportedError(message);
}

}  // namespace tavlen::cli
