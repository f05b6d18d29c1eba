#include <algorithm>
#include <exception>
#include <filesystem>
#include <iterator>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <system_error>
#include <vector>

#include "cli/arguments/CollectionArgument.h"
#include "cli/arguments/StoredItem.h"
#include "cli/commands/Commands.h"
#include "cli/commands/ItemCreation.h"
#include "cli/terminal/Console.h"
#include "cli/terminal/ShownText.h"
#include "cli/terminal/TextTable.h"
#include "cli/work/StoreLock.h"
#include "tavlen/collections/TweakCollection.h"
#include "tavlen/collections/TweakCollectionManifest.h"
#include "tavlen/items/TweakError.h"
#include "tavlen/items/TweaksDirectory.h"
#include "tavlen/store/TweakManager.h"
#include "tavlen/tweaks/Manifest.h"

namespace tavlen::cli {

namespace {

struct MemberOptions {
  std::string collection;
  std::vector<std::string> tweaks;
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

/// Removes a member. An identifier may be that of a tweak that no longer exists.
void removeMember(Manifest& manifest, const std::string& text) {
  const std::string id = contains(manifest._tweaks, text) ? text : storedTweak(text)->id();
  if (std::erase(manifest._tweaks, id) == 0) {
    throw std::runtime_error(text + ": is not in the collection");
  }
}

/// Edits the collection once for all tweaks, so that a failure leaves it unchanged.
int edit(const MemberOptions& options, void (*change)(Manifest&, const std::string&)) {
  auto [collection, manifest] = openedCollection(options.collection);
  for (const std::string& tweak : options.tweaks) change(manifest, tweak);
  collection->setManifest(manifest);
  return 0;
}

/// The row of the member `id`. A collection counts as missing: the library leaves it out as well.
Row rowOf(const std::string& id) {
  try {
    const OpenedItem opened = TweakManager::openWithID(id);
    if (opened.tweak() != nullptr) return {opened.configuration().name(), id, false};
  } catch (const std::exception&) {
    // Reported as missing, as below.
  }
  return {std::nullopt, id, true};
}

int list(const ListOptions& options) {
  const Manifest manifest = openedCollection(options.collection).manifest;
  std::vector<Row> rows;
  std::transform(manifest._tweaks.begin(), manifest._tweaks.end(), std::back_inserter(rows), rowOf);
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
  runEdit(command, options->collection, [options, change] { return edit(*options, change); });
}

void addList(Command collection) {
  Command command = collection.addCommand("list", "List a collection's members in their order");
  const auto options = std::make_shared<ListOptions>();
  command.text("COLLECTION", options->collection, kCollectionHelp).required().notEmpty();
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
  addEdit(command, "remove", "Remove tweaks from a collection, but not from the store",
          "The tweak: its identifier (even if it no longer exists), its name, or its path",
          removeMember);
  addList(command);
}

}  // namespace tavlen::cli
