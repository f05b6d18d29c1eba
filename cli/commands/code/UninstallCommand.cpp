#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <tuple>

#include "cli/arguments/AppArgument.h"
#include "cli/arguments/StoredItem.h"
#include "cli/commands/Commands.h"
#include "cli/items/ActiveTweak.h"
#include "cli/terminal/ShownText.h"
#include "tavlen/foundation/text/Unicode.h"

namespace tavlen::cli {

namespace {

struct Options {
  std::string item;
  std::string app;
  bool json = false;
};

/// What was uninstalled, for the output.
struct Row {
  std::string id;
  std::string bundleID;

  static constexpr auto codedFields() {
    return std::tuple{requiredField("identifier", &Row::id),
                      requiredField("bundleID", &Row::bundleID)};
  }
};

int uninstall(IPA& ipa, const std::string& id, bool json) {
  setActiveTweak(ipa, nullptr);
  if (json) printData(shownJSON(Row{wellFormedUTF8(id), readInfo(ipa).bundleID}) + "\n");
  return 0;
}

int uninstallItem(const Options& options) {
  const OpenedItem opened = openedItem(options.item);
  const std::shared_ptr<IPA> ipa = appWithBundleID(opened.configuration().bundleID());
  const std::string id = opened.item()->id();
  if (ipa->activeTweakID() != id) throw std::runtime_error(options.item + ": is not installed");
  return uninstall(*ipa, id, options.json);
}

int uninstallFrom(const Options& options) {
  const std::shared_ptr<IPA> ipa = appArgument(options.app);
  const std::optional<std::string> id = ipa->activeTweakID();
  if (!id) throw std::runtime_error(options.app + ": no tweak is installed");
  return uninstall(*ipa, *id, options.json);
}

}  // namespace

void addUninstallCommand(Command app) {
  Command command = app.addCommand("uninstall", "Uninstall the active tweak of an app");
  const auto options = std::make_shared<Options>();
  Command which = command.addGroup("WHICH", "The item to uninstall", 1, 1);
  which.text("ITEM", options->item, kItemHelp).notEmpty();
  which.text("--app", options->app, "The active tweak of that app, even if it is not stored")
      .notEmpty()
      .typeName("APP");
  command.flag("--json", options->json, "Print what was uninstalled as a JSON object");
  command.run([options] {
    return options->item.empty() ? uninstallFrom(*options) : uninstallItem(*options);
  });
}

}  // namespace tavlen::cli
