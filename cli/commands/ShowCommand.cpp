#include <algorithm>
#include <memory>
#include <optional>
#include <string>
#include <system_error>
#include <vector>

#include "cli/arguments/StoredItem.h"
#include "cli/commands/Commands.h"
#include "cli/terminal/Console.h"
#include "cli/terminal/ShownText.h"
#include "cli/work/ActiveTweak.h"
#include "tavlen/collections/TweakCollectionManifest.h"
#include "tavlen/foundation/text/EscapedText.h"
#include "tavlen/foundation/text/Unicode.h"
#include "tavlen/tweaks/Manifest.h"

namespace tavlen {

template <>
struct Coding<TweakManifest> {
  static void encode(Encoder& encoder, const TweakManifest& manifest) { manifest.encode(encoder); }
};

namespace cli {

namespace {

/// The JSON output for an item, without its document.
struct Item {
  std::string id;
  std::string kind;
  std::string path;
  bool isInstalled;

  static constexpr auto codedFields() {
    return std::tuple{requiredField("identifier", &Item::id), requiredField("kind", &Item::kind),
                      requiredField("path", &Item::path),
                      requiredField("installed", &Item::isInstalled)};
  }
};

std::string row(const std::string& title, const std::string& value) {
  constexpr std::size_t kTitleWidth = 12;
  std::string text = title.empty() ? "" : title + ":";
  text.resize(kTitleWidth, ' ');
  return text + escapedForTerminal(value) + "\n";
}

/// One row for each entry, with the title before the first one; "none" if there are no entries.
std::string list(const std::string& title, const std::vector<std::string>& entries) {
  if (entries.empty()) return row(title, "none");
  std::string text;
  for (const std::string& entry : entries) text += row(text.empty() ? title : "", entry);
  return text;
}

std::string scriptSummary(const TweakFile& tweak) {
  try {
    const std::string script = tweak.readScript().value_or(std::string());
    return script.empty() ? "none" : std::to_string(script.size()) + " bytes";
  } catch (const std::system_error&) {
    return "cannot be read";
  }
}

std::string contentsOf(const TweakFile::Opened& tweak) {
  const auto& [file, manifest] = tweak;
  std::vector<std::string> hooks;
  for (const Hook& hook : manifest.hooks()) hooks.push_back(methodText(hook.identity()));
  std::vector<std::string> overrides;
  for (const Override& override_ : manifest.overrides()) {
    overrides.push_back(localizedName(override_));
  }
  return list("Hooks", hooks) + list("Overrides", overrides) + row("Script", scriptSummary(*file)) +
         row("Icon", file->customIcon() ? "its own" : "the app's");
}

std::string contentsOf(const TweakCollection::Opened& collection) {
  const std::vector<TweakFile::Opened> opened = collection.manifest.openedTweaks();
  std::vector<std::string> members;
  for (const std::string& id : collection.manifest._tweaks) {
    const auto member = std::find_if(opened.begin(), opened.end(),
                                     [&](const auto& tweak) { return tweak.file->id() == id; });
    members.push_back(
        id + "  " +
        (member == opened.end() ? "(cannot be opened)" : member->manifest.configuration.name));
  }
  return list("Tweaks", members);
}

std::string table(const OpenedItem& opened, bool isInstalled) {
  const std::shared_ptr<TweakProtocol> item = opened.item();
  const TweakConfiguration configuration = opened.configuration();
  const TweakGlyph& glyph = configuration.glyph();
  return row("Name", configuration.name()) + row("Kind", kindOf(*item)) +
         row("Identifier", item->id()) + row("App", configuration.bundleID()) +
         row("Color", std::string(rawValue(configuration.color()))) +
         row("Glyph", glyph.icon + "/" + glyph.style) +
         row("Installed", isInstalled ? "yes" : "no") +
         std::visit([](const auto& each) { return contentsOf(each); }, opened);
}

int show(const std::string& name, bool json) {
  const OpenedItem opened = openedItem(name);
  const std::shared_ptr<TweakProtocol> item = opened.item();
  const bool isInstalled = isActiveTweak(opened.configuration().bundleID(), item->id());
  if (!json) {
    printData(table(opened, isInstalled));
    return 0;
  }
  std::string text = shownJSON(Item{wellFormedUTF8(item->id()), kindOf(*item),
                                    wellFormedUTF8(item->url().native()), isInstalled});
  // Encode the document separately: it may already have the maximum nesting depth.
  text.back() = ',';
  printData(text + "\"manifest\":" + shownJSON(opened.manifest()) + "}\n");
  return 0;
}

}  // namespace

void addShowCommand(Command app) {
  Command command = app.addCommand("show", "Print the contents of a tweak or a collection");
  const auto name = std::make_shared<std::string>();
  const auto json = std::make_shared<bool>(false);
  command.text("ITEM", *name, kItemHelp).required().notEmpty();
  command.flag("--json", *json, "Print a JSON object");
  command.run([name, json] { return show(*name, *json); });
}

}  // namespace cli
}  // namespace tavlen
