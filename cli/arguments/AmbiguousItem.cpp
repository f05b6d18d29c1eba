#include "cli/arguments/AmbiguousItem.h"

#include <sys/stat.h>

#include <algorithm>
#include <array>
#include <ctime>
#include <filesystem>
#include <optional>
#include <utility>
#include <vector>

#include "cli/terminal/Diagnostic.h"
#include "cli/terminal/ReportedError.h"
#include "cli/terminal/TextTable.h"
#include "tavlen/device/DeviceRoot.h"
#include "tavlen/device/InstalledRecords.h"

namespace tavlen::cli {

namespace {

/// When the item's document was changed, in local time; nothing if that is unknown.
std::optional<std::string> dateOf(const OpenedItem& item) {
  std::filesystem::path document = DeviceRoot::shared().follow(item.item()->url());
  if (item.tweak() != nullptr) document /= "Manifest.json";
  struct stat status {};
  std::tm time{};
  if (::stat(document.c_str(), &status) != 0 || ::localtime_r(&status.st_mtime, &time) == nullptr)
    return std::nullopt;
  std::array<char, 32> text{};
  return std::string(text.data(), std::strftime(text.data(), text.size(), "%Y-%m-%d %H:%M", &time));
}

bool isInstalled(const std::string& id, const std::string& app) {
  const auto record = InstalledRecords::record(app);
  return record && record->tweakID == id;
}

/// In the order of their identifiers.
std::vector<Candidate> candidatesIn(const FoundItems& found) {
  std::vector<Candidate> candidates;
  for (const OpenedItem& each : found.items) {
    const TweakConfiguration settings = each.configuration();
    const std::string id = each.item()->id();
    candidates.push_back({settings.name(), settings.bundleID(), dateOf(each),
                          isInstalled(id, settings.bundleID()), id});
  }
  for (const std::string& id : found.broken)
    candidates.push_back({std::nullopt, std::nullopt, std::nullopt, false, id});
  std::sort(candidates.begin(), candidates.end(),
            [](const auto& one, const auto& other) { return one.id < other.id; });
  return candidates;
}

std::string table(const std::vector<Candidate>& candidates) {
  TextTable table({"IDENTIFIER", "NAME", "APP", "CHANGED", "INSTALLED"});
  for (const Candidate& each : candidates) {
    table.addRow({each.id, each.name.value_or("(broken)"), each.bundleID.value_or(""),
                  each.changed.value_or(""), each.isInstalled ? "yes" : ""});
  }
  return table.text();
}

}  // namespace

void refuseAmbiguous(const std::string& text, const FoundItems& found) {
  const bool isName = !found.items.empty() && found.items.front().configuration().name() == text;
  const std::string message =
      text + (isName ? ": several items have that name; name one by its identifier"
                     : ": several identifiers begin like that; write more of one");
  std::vector<Candidate> candidates = candidatesIn(found);
  std::string lines = table(candidates);
  print({.severity = Diagnostic::kError,
         .message = message,
         .candidates = std::move(candidates),
         .excerpt = std::move(lines)});
  throw ReportedError(message);
}

}  // namespace tavlen::cli
