#include <algorithm>
#include <exception>
#include <memory>
#include <optional>
#include <string>
#include <system_error>
#include <vector>

#include "cli/arguments/StoredItem.h"
#include "cli/commands/Commands.h"
#include "cli/items/ActiveTweak.h"
#include "cli/items/ItemRow.h"
#include "cli/terminal/Console.h"
#include "cli/terminal/FieldList.h"
#include "cli/terminal/ShownText.h"
#include "cli/tweaks/TweakForReading.h"
#include "tavlen/collections/TweakCollectionManifest.h"
#include "tavlen/tweaks/Manifest.h"

namespace tavlen {

template <>
struct Coding<TweakManifest> {
  static void encode(Encoder& encoder, const TweakManifest& manifest) { manifest.encode(encoder); }
};

namespace cli {

namespace {

constexpr std::size_t kTitleWidth = 12;

std::string scriptSummary(const TweakFile& tweak) {
  try {
    const std::string script = tweak.readScript().value_or(std::string());
    return script.empty() ? "none" : std::to_string(script.size()) + " bytes";
  } catch (const std::system_error&) {
    return "cannot be read";
  }
}

void addFiles(FieldList& fields, const TweakFile& tweak) {
  fields.add("Script", scriptSummary(tweak));
  fields.add("Icon", tweak.customIcon() ? "its own" : "the app's");
}

void addContents(FieldList& fields, const TweakFile::Opened& tweak) {
  std::vector<std::string> hooks;
  for (const Hook& hook : tweak.manifest.hooks()) hooks.push_back(methodText(hook.identity()));
  std::vector<std::string> overrides;
  for (const Override& override_ : tweak.manifest.overrides()) {
    overrides.push_back(localizedName(override_));
  }
  fields.addAll("Hooks", hooks);
  fields.addAll("Overrides", overrides);
  addFiles(fields, *tweak.file);
}

void addMembers(FieldList& fields, const TweakCollection::Manifest& manifest,
                const std::vector<TweakFile::Opened>& opened) {
  std::vector<std::string> members;
  for (const std::string& id : manifest._tweaks) {
    const auto member = std::find_if(opened.begin(), opened.end(),
                                     [&](const auto& tweak) { return tweak.file->id() == id; });
    members.push_back(
        id + "  " +
        (member == opened.end() ? "(cannot be opened)" : member->manifest.configuration.name));
  }
  fields.addAll("Tweaks", members);
}

void addHead(FieldList& fields, const std::string& kind, const std::optional<std::string>& id,
             const std::optional<TweakConfiguration>& configuration, bool isInstalled) {
  if (configuration) fields.add("Name", configuration->name());
  fields.add("Kind", kind);
  if (id) fields.add("Identifier", *id);
  if (configuration) {
    const TweakGlyph& glyph = configuration->glyph();
    fields.add("App", configuration->bundleID());
    fields.add("Color", std::string(rawValue(configuration->color())));
    fields.add("Glyph", glyph.icon + "/" + glyph.style);
  }
  fields.add("Installed", isInstalled ? "yes" : "no");
}

/// Prints what is known of a broken item. Its error is also the command's.
void showBroken(const BrokenItem& broken, bool json) {
  const TweakProtocol& item = *broken.item;
  const bool isInstalled = appWithActiveTweak(item.id()).has_value();
  if (json) {
    return printData(shownJSON(rowOf(broken, isInstalled)) + "\n");
  }
  FieldList fields(kTitleWidth);
  addHead(fields, kindOf(item), item.id(), broken.configuration, isInstalled);
  if (const auto* tweak = dynamic_cast<const TweakFile*>(&item)) addFiles(fields, *tweak);
  fields.add("Error", broken.error);
  printData(fields.text());
}

ItemForReading openedOrShown(const std::string& name, bool json) {
  try {
    return itemForReading(name);
  } catch (const std::exception&) {
    if (const std::optional<BrokenItem> broken = brokenItem(name)) showBroken(*broken, json);
    throw;
  }
}

int show(const std::string& name, bool json) {
  const ItemForReading read = openedOrShown(name, json);
  const OpenedItem& item = read.item;
  const ItemRow row = rowOf(read);
  if (!json) {
    FieldList fields(kTitleWidth);
    addHead(fields, row.kind, row.id, item.configuration(), row.isInstalled);
    if (const auto* collection = item.collection()) {
      addMembers(fields, collection->manifest, read.members());
    } else {
      addContents(fields, *item.tweak());
    }
    printData(fields.text());
    return 0;
  }
  std::string text = shownJSON(row);
  // Encode the document separately: it may already have the maximum nesting depth.
  text.back() = ',';
  printData(text + "\"manifest\":" + shownJSON(item.manifest()) + "}\n");
  return 0;
}

}  // namespace

void addShowCommand(Command app) {
  Command command = app.addCommand("show", "Print the contents of a tweak or a collection");
  const auto name = std::make_shared<std::string>();
  const auto json = std::make_shared<bool>(false);
  command.text("ITEM", *name, kReadItemHelp).required().notEmpty();
  command.flag("--json", *json, "Print a JSON object");
  command.run([name, json] { return show(*name, *json); });
}

}  // namespace cli
}  // namespace tavlen
