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
  std::vector<std::string> documents;
  std::optional<std::string> name;

  static constexpr auto codedFields() {
    return std::tuple{requiredField("event", &Row::event), requiredField("kind", &Row::kind),
                      requiredField("identifier", &Row::id),
                      requiredField("documents", &Row::documents),
                      optionalField("name", &Row::name)};
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

Row rowOf(const StoreSnapshot::Change& change, const Names& names) {
  static constexpr std::array kEvents = {"created", "changed", "deleted"};
  static constexpr std::array kDocuments = {"manifest", "script", "icon"};
  Row row;
  row.event = kEvents.at(static_cast<std::size_t>(change.kind));
  row.kind = TweakFile::isValidID(change.id) ? "tweak" : "collection";
  row.id = wellFormedUTF8(change.id);
  for (const StoreSnapshot::Document document : change.documents) {
    row.documents.emplace_back(kDocuments.at(static_cast<std::size_t>(document)));
  }
  row.name = names.of(change.id);
  return row;
}

/// The name comes last, because it may contain blanks.
std::string line(const Row& row) {
  std::string documents;
  for (const std::string& document : row.documents) {
    documents += (documents.empty() ? "" : ",") + document;
  }
  return row.event + " " + escapedForTerminal(row.id) + " " + documents + " " +
         escapedForTerminal(row.name.value_or("-"));
}

/// Takes a snapshot and watches its folders. Repeats this until no new folder has appeared, so that
/// no change is missed.
StoreSnapshot look(DirectoryWatcher& watcher) {
  StoreSnapshot snapshot = StoreSnapshot::take();
  for (std::vector<std::filesystem::path> watched; watched != snapshot.folders();
       snapshot = StoreSnapshot::take()) {
    watched = snapshot.folders();
    watcher.watch(watched);
  }
  return snapshot;
}

void print(const StoreSnapshot::Change& change, Names& names, bool json) {
  const bool isDeletion = change.kind == StoreSnapshot::Change::Kind::deleted;
  if (!isDeletion) names.read(change.id);
  const Row row = rowOf(change, names);
  printData((json ? shownJSON(row) : line(row)) + "\n");
  if (isDeletion) names.forget(change.id);
}

int watch(bool json) {
  const EndSignals signals;
  const std::array<int, 2> ends = {signals.descriptor(), STDOUT_FILENO};
  DirectoryWatcher watcher;
  StoreSnapshot current = look(watcher);
  Names names;
  for (const std::string& id : current.ids()) names.read(id);
  printNote("watching " + TweaksDirectory::url().string());
  while (watcher.wait(ends) != DirectoryWatcher::Wake::end) {
    StoreSnapshot next = look(watcher);
    for (const StoreSnapshot::Change& change : next.changesSince(current)) {
      print(change, names, json);
    }
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
