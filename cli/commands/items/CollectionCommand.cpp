#include <algorithm>
#include <charconv>
#include <cstddef>
#include <exception>
#include <filesystem>
#include <iterator>
#include <map>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <system_error>
#include <vector>

#include "cli/arguments/CollectionArgument.h"
#include "cli/arguments/StoredItem.h"
#include "cli/commands/Commands.h"
#include "cli/commands/items/ItemCreation.h"
#include "cli/items/ItemRow.h"
#include "cli/items/StoreLock.h"
#include "cli/terminal/Console.h"
#include "cli/terminal/ShownText.h"
#include "cli/terminal/TextTable.h"
#include "cli/tweaks/TweakForReading.h"
#include "tavlen/collections/TweakCollection.h"
#include "tavlen/collections/TweakCollectionManifest.h"
#include "tavlen/items/TweakError.h"
#include "tavlen/items/TweaksDirectory.h"
#include "tavlen/store/TweakManager.h"
#include "tavlen/tweaks/Manifest.h"

namespace tavlen::cli {

namespace {

constexpr const char* kMemberHelp =
    "The tweak: its identifier (even if it no longer exists), its name, or its path";
constexpr const char* kReadCollectionHelp =
    "The collection: its identifier, its name, or the path of its file or archive";
constexpr const char* kCollectionJSONHelp = "Print the collection as a JSON object";

struct MemberOptions {
  std::string collection;
  std::vector<std::string> tweaks;
  bool json = false;
};

struct MoveOptions {
  std::string collection;
  std::string tweak;
  std::string place;
  bool json = false;
};

struct ListOptions {
  std::string collection;
  bool json = false;
};

/// A row of the output, which describes one member.
struct Row {
  std::optional<std::string> name;
  std::string id;
  bool isMissing = false;

  static constexpr auto codedFields() {
    return std::tuple{optionalField("name", &Row::name), requiredField("identifier", &Row::id),
                      requiredField("missing", &Row::isMissing)};
  }
};

using Manifest = TweakCollection::Manifest;

bool contains(const std::vector<std::string>& ids, const std::string& id) {
  return std::find(ids.begin(), ids.end(), id) != ids.end();
}

/// Throws for a tweak outside the store: collections refer to members by their identifiers there.
void checkIsStored(const TweakFile& tweak, const std::string& text) {
  std::error_code ignored;
  if (!std::filesystem::equivalent(tweak.url(), TweaksDirectory::url() / tweak.id(), ignored)) {
    throw std::runtime_error(text + ": is not in " + TweaksDirectory::url().string());
  }
}

void addMember(Manifest& manifest, const std::string& text) {
  const auto [tweak, opened, ignored] = openedTweak(text);
  checkIsStored(*tweak, text);
  const std::string& expected = manifest.configuration.bundleID;
  const std::string& found = opened.configuration.bundleID;
  if (found != expected) {
    throw std::runtime_error(text + ": " +
                             errorText(TweakError::bundleIDMismatch(expected, found)));
  }
  if (contains(manifest._tweaks, tweak->id())) {
    throw std::runtime_error(text + ": is already in the collection");
  }
  manifest._tweaks.push_back(tweak->id());
}

/// The identifier of a member. It may be that of a tweak that no longer exists.
std::string memberID(const Manifest& manifest, const std::string& text) {
  if (contains(manifest._tweaks, text)) return text;
  std::string id = storedTweak(text)->id();
  if (!contains(manifest._tweaks, id)) {
    throw std::runtime_error(text + ": is not in the collection");
  }
  return id;
}

void removeMember(Manifest& manifest, const std::string& text) {
  std::erase(manifest._tweaks, memberID(manifest, text));
}

/// The place that `text` names among `count` members: an index from 0, or "end".
std::ptrdiff_t placeAmong(std::size_t count, const std::string& text) {
  std::size_t place = count - 1;
  if (text != "end") {
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), place);
    if (error != std::errc() || end != text.data() + text.size() || place >= count) {
      throw std::runtime_error(text + ": is no place; the members have the places from 0 to " +
                               std::to_string(count - 1));
    }
  }
  return static_cast<std::ptrdiff_t>(place);
}

void moveMember(Manifest& manifest, const std::string& text, const std::string& place) {
  std::vector<std::string>& ids = manifest._tweaks;
  const std::string id = memberID(manifest, text);
  const std::ptrdiff_t to = placeAmong(ids.size(), place);
  ids.erase(std::find(ids.begin(), ids.end(), id));
  ids.insert(ids.begin() + to, id);
}

/// Edits the collection once, so that a failure leaves it unchanged.
template <class Change>
int edit(const std::string& name, bool json, const Change& change) {
  TweakCollection::Opened opened = openedCollection(name);
  change(opened.manifest);
  opened.file->setManifest(opened.manifest);
  if (json) printRow(opened);
  return 0;
}

int list(const ListOptions& options) {
  const ItemForReading read = collectionForReading(options.collection);
  std::map<std::string, std::string> names;
  for (const TweakFile::Opened& member : read.members())
    names.emplace(member.file->id(), member.manifest.configuration.name);
  std::vector<Row> rows;
  for (const std::string& id : read.item.collection()->manifest._tweaks) {
    const auto name = names.find(id);
    rows.push_back(name == names.end() ? Row{std::nullopt, id, true} : Row{name->second, id});
  }
  if (options.json) {
    printData(shownJSON(rows) + "\n");
    return 0;
  }
  TextTable table({"NAME", "IDENTIFIER", "NOTE"});
  for (const Row& row : rows) {
    table.addRow({row.name.value_or("-"), row.id, row.isMissing ? "missing" : ""});
  }
  if (!rows.empty()) printData(table.text());
  return 0;
}

void addEdit(Command collection, const char* name, const char* description, const char* tweakHelp,
             void (*change)(Manifest&, const std::string&)) {
  Command command = collection.addCommand(name, description);
  const auto options = std::make_shared<MemberOptions>();
  command.text("COLLECTION", options->collection, kCollectionHelp).required().notEmpty();
  command.texts("TWEAK", options->tweaks, tweakHelp).notEmpty();
  command.flag("--json", options->json, kCollectionJSONHelp);
  runEdit(command, options->collection, [options, change] {
    return edit(options->collection, options->json, [&](Manifest& manifest) {
      for (const std::string& tweak : options->tweaks) change(manifest, tweak);
    });
  });
}

void addMove(Command collection) {
  Command command = collection.addCommand("move", "Move a member of a collection");
  const auto options = std::make_shared<MoveOptions>();
  command.text("COLLECTION", options->collection, kCollectionHelp).required().notEmpty();
  command.text("TWEAK", options->tweak, kMemberHelp).required().notEmpty();
  command.text("TO", options->place, "Its new place, from 0, or end").required().notEmpty();
  command.flag("--json", options->json, kCollectionJSONHelp);
  runEdit(command, options->collection, [options] {
    return edit(options->collection, options->json,
                [&](Manifest& manifest) { moveMember(manifest, options->tweak, options->place); });
  });
}

void addList(Command collection) {
  Command command = collection.addCommand("list", "List a collection's members in their order");
  const auto options = std::make_shared<ListOptions>();
  command.text("COLLECTION", options->collection, kReadCollectionHelp).required().notEmpty();
  command.flag("--json", options->json, "Print a JSON array");
  command.run([options] { return list(*options); });
}

}  // namespace

void addCollectionCommand(Command app) {
  Command command = app.addCommand("collection", "Create and edit collections of tweaks");
  command.requireCommand();
  addItemCreation(command, "collection", TweakCollection::create);
  addEdit(command, "add", "Add tweaks of the same app to a collection, at its end", kTweakHelp,
          addMember);
  addEdit(command, "remove", "Remove tweaks from a collection, but not from the store", kMemberHelp,
          removeMember);
  addMove(command);
  addList(command);
}

}  // namespace tavlen::cli
