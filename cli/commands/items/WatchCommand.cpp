#include <unistd.h>

#include <array>
#include <csignal>
#include <exception>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <system_error>
#include <vector>

#include "cli/commands/Commands.h"
#include "cli/terminal/Console.h"
#include "cli/terminal/EndSignals.h"
#include "cli/terminal/ShownText.h"
#include "tavlen/foundation/files/DirectoryWatcher.h"
#include "tavlen/foundation/text/EscapedText.h"
#include "tavlen/foundation/text/Unicode.h"
#include "tavlen/items/TweaksDirectory.h"
#include "tavlen/store/InstalledSnapshot.h"
#include "tavlen/store/StoreSnapshot.h"
#include "tavlen/store/TweakManager.h"
#include "tavlen/tweaks/TweakFile.h"

namespace tavlen::cli {

namespace {

/// A row of the output, which describes one change.
struct Row {
  std::string event;
  std::string kind;
  std::string id;
  std::optional<std::vector<std::string>> documents;  ///< nothing for an installation
  std::optional<std::string> name;
  std::optional<std::string> bundleID;  ///< the app of an installation

  static constexpr auto codedFields() {
    return std::tuple{
        requiredField("event", &Row::event),   requiredField("kind", &Row::kind),
        requiredField("identifier", &Row::id), optionalField("documents", &Row::documents),
        optionalField("name", &Row::name),     optionalField("bundleID", &Row::bundleID)};
  }
};

/// The names of the items as last read, so that a deleted item can still be named.
class Names {
 public:
  void read(const std::string& id) {
    try {
      names_[id] = TweakManager::tweakWithID(id)->genericConfiguration().name();
    } catch (const std::exception&) {
      return;  // deleted or invalid: keep the previous name
    }
  }
  std::optional<std::string> of(const std::string& id) const {
    const auto name = names_.find(id);
    return name == names_.end() ? std::nullopt : std::optional(name->second);
  }
  void forget(const std::string& id) { names_.erase(id); }

 private:
  std::map<std::string, std::string> names_;
};

Row rowOf(const char* event, const std::string& id, const Names& names) {
  Row row;
  row.event = event;
  row.kind = TweakFile::isValidID(id) ? "tweak" : "collection";
  row.id = wellFormedUTF8(id);
  row.name = names.of(id);
  return row;
}

Row rowOf(const StoreSnapshot::Change& change, const Names& names) {
  static constexpr std::array kEvents = {"created", "changed", "deleted"};
  static constexpr std::array kDocuments = {"manifest", "script", "icon", "resources"};
  Row row = rowOf(kEvents.at(static_cast<std::size_t>(change.kind)), change.id, names);
  row.documents.emplace();
  for (const StoreSnapshot::Document document : change.documents) {
    row.documents->emplace_back(kDocuments.at(static_cast<std::size_t>(document)));
  }
  return row;
}

Row rowOf(const InstalledSnapshot::Change& change, const Names& names) {
  Row row = rowOf(change.isInstalled ? "installed" : "uninstalled", change.id, names);
  row.bundleID = wellFormedUTF8(change.bundleID);
  return row;
}

/// The name comes last, because it may contain blanks.
std::string line(const Row& row) {
  std::string what = row.bundleID.value_or("");
  for (const std::string& document : row.documents.value_or(std::vector<std::string>())) {
    what += (what.empty() ? "" : ",") + document;
  }
  return row.event + " " + escapedForTerminal(row.id) + " " + escapedForTerminal(what) + " " +
         escapedForTerminal(row.name.value_or("-"));
}

/// The store, and what is installed.
struct Snapshot {
  StoreSnapshot store;
  InstalledSnapshot installed;

  static Snapshot take(const Snapshot& before) {
    return {StoreSnapshot::take(), InstalledSnapshot::take(before.installed)};
  }
  std::vector<std::filesystem::path> folders() const {
    std::vector<std::filesystem::path> all = store.folders();
    all.insert(all.end(), installed.folders().begin(), installed.folders().end());
    return all;
  }
};

/// Takes a snapshot and watches its folders. Repeats this until no new folder has appeared, so that
/// no change is missed.
Snapshot look(DirectoryWatcher& watcher, const Snapshot& before) {
  Snapshot snapshot = Snapshot::take(before);
  for (std::vector<std::filesystem::path> watched; watched != snapshot.folders();
       snapshot = Snapshot::take(snapshot)) {
    watched = snapshot.folders();
    watcher.watch(watched);
  }
  return snapshot;
}

void print(const Row& row, bool json) { printData((json ? shownJSON(row) : line(row)) + "\n"); }

void print(const StoreSnapshot::Change& change, Names& names, bool json) {
  const bool isDeletion = change.kind == StoreSnapshot::Change::Kind::deleted;
  if (!isDeletion) names.read(change.id);
  print(rowOf(change, names), json);
  if (isDeletion) names.forget(change.id);
}

int watch(bool json) {
  const EndSignals signals;
  const std::array<int, 2> ends = {signals.descriptor(), STDOUT_FILENO};
  DirectoryWatcher watcher;
  Snapshot current = look(watcher, {});
  Names names;
  for (const std::string& id : current.store.ids()) names.read(id);
  printNote("watching " + TweaksDirectory::url().string());
  while (watcher.wait(ends) != DirectoryWatcher::Wake::end) {
    Snapshot next = look(watcher, current);
    // An item is uninstalled before it is deleted, and while it still has its name.
    for (const auto& change : next.installed.changesSince(current.installed)) {
      if (change.isInstalled) names.read(change.id);
      print(rowOf(change, names), json);
    }
    for (const auto& change : next.store.changesSince(current.store)) print(change, names, json);
    current = std::move(next);
  }
  return 0;
}

/// A closed output, as in `tavlen watch | head`, ends the command and is not an error.
int watchUntilUnread(bool json) {
  try {
    return watch(json);
  } catch (const std::system_error& error) {
    if (error.code() == std::errc::broken_pipe) return 0;
    throw;
  }
}

}  // namespace

void addWatchCommand(Command app) {
  Command command =
      app.addCommand("watch", "Print a line for each change of a tweak or a collection");
  const auto json = std::make_shared<bool>(false);
  command.flag("--json", *json, "Print each line as a JSON object");
  command.run([json] { return watchUntilUnread(*json); });
}

}  // namespace tavlen::cli
