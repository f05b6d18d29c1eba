#include "cli/commands/items/ItemCreation.h"

#include <utility>
#include <vector>

#include "cli/arguments/AppArgument.h"
#include "cli/arguments/LookOptions.h"
#include "cli/arguments/StoredItem.h"
#include "cli/classes/AppForReading.h"
#include "cli/items/ItemNames.h"
#include "cli/items/ItemRow.h"
#include "cli/items/StoreLock.h"
#include "cli/terminal/ShownText.h"

namespace tavlen::cli {

namespace {

struct Options {
  std::string name;
  std::string app;
  Look look;
  bool json = false;
};

int create(const Options& options, const ItemFactory& make) {
  const std::string bundleID = targetBundleID(options.app);
  const StoreLock lock = StoreLock::ofStore();
  ItemNames().requireFree(options.name);
  const std::shared_ptr<TweakProtocol> item =
      make(options.name, options.look.color.value_or(TweakColor::lightGreen),
           options.look.glyph.value_or(TweakGlyph::default_()), bundleID);
  announce(*item, GenericTweakDiffMode::create);
  warnIfNotInstalled(bundleID);
  printData(options.json ? shownJSON(rowOf(*item, item->genericConfiguration())) + "\n"
                         : item->id() + "\n");
  return 0;
}

}  // namespace

void addItemCreation(Command group, const std::string& kind, ItemFactory make) {
  Command command =
      group.addCommand("new", "Create an empty " + kind + " and print its identifier");
  const auto options = std::make_shared<Options>();
  command.text("NAME", options->name, "The " + kind + "'s name").required().notEmpty().utf8();
  command.text("--app", options->app, kReadAppHelp)
      .required()
      .notEmpty()
      .utf8()
      .typeName("APP|FILE");
  addLookOptions(command, options->look);
  command.flag("--json", options->json, "Print the new item as a JSON object");
  command.run([options, make = std::move(make)] { return create(*options, make); });
}

}  // namespace tavlen::cli
