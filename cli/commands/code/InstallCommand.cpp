#include <algorithm>
#include <filesystem>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "cli/arguments/AppArgument.h"
#include "cli/arguments/CollectionArgument.h"
#include "cli/arguments/StoredItem.h"
#include "cli/arguments/TranspilerOption.h"
#include "cli/commands/Commands.h"
#include "cli/items/ActiveTweak.h"
#include "cli/items/ItemRow.h"
#include "cli/terminal/Console.h"
#include "cli/terminal/ShownText.h"
#include "cli/tweaks/Transpilation.h"
#include "cli/tweaks/TweakCheck.h"
#include "cli/tweaks/TweakForReading.h"
#include "tavlen/collections/TweakCollectionManifest.h"
#include "tavlen/store/InstallableItem.h"

namespace tavlen::cli {

namespace {

struct Options {
  std::string item;
  std::string transpiler;
  bool copyExecutables = false;
  bool json = false;
};

using Tweaks = std::vector<TweakFile::Opened>;

/// Warns of members of a collection that cannot be opened. Throws if nothing would be installed:
/// that would be a way to uninstall by accident.
void checkMembers(const OpenedItem& item, const Tweaks& tweaks, const std::string& name) {
  if (item.collection() == nullptr) return;
  const TweakCollection::Manifest& manifest = item.collection()->manifest;
  if (tweaks.empty()) {
    throw std::runtime_error(
        name +
        (manifest._tweaks.empty() ? ": has no members" : ": none of its members can be opened") +
        ", so there is nothing to install; to uninstall, use uninstall --app " +
        manifest.configuration.bundleID);
  }
  for (const std::string& id : missingMembers(manifest, tweaks)) {
    printWarning("the member " + id + " cannot be opened and is left out");
  }
}

/// Converts each tweak again, in order to report syntax errors with their places in the source.
/// Returns whether there was one.
bool showsSyntaxError(const Tweaks& tweaks, const std::filesystem::path& transpiler) {
  return std::any_of(tweaks.begin(), tweaks.end(), [&](const auto& tweak) {
    const OpenedTweak opened = openTweak(std::filesystem::absolute(tweak.file->url()).string());
    if (transpile(opened, transpiler, TweakProcessor::Map::leaveOut)) return false;
    printError(opened.folder + ": does not build");
    return true;
  });
}

int install(const Options& options) {
  const OpenedItem item = openedItem(options.item);
  const std::shared_ptr<IPA> ipa = appWithBundleID(item.configuration().bundleID());
  const std::filesystem::path transpiler = transpilerFolder(options.transpiler);
  const InstallableItem installable(item, transpiler, options.copyExecutables);
  checkMembers(item, installable.tweaks(), options.item);
  for (const TweakFile::Opened& tweak : installable.tweaks())
    printWarningsOfInstallation(tweak, options.copyExecutables);
  try {
    setActiveTweak(*ipa, &installable);
  } catch (const TweakProcessor::Error&) {
    if (!showsSyntaxError(installable.tweaks(), transpiler)) throw;
    return 1;
  }
  if (options.json) printRow(item);
  return 0;
}

}  // namespace

void addInstallCommand(Command app) {
  Command command =
      app.addCommand("install", "Make a tweak or a collection the active one of its app");
  const auto options = std::make_shared<Options>();
  command.text("ITEM", options->item, kItemHelp).required().notEmpty();
  command.flag("--executables", options->copyExecutables, "Also install its executables");
  command.flag("--json", options->json, "Print the item as a JSON object");
  addTranspilerOption(command, options->transpiler);
  command.run([options] { return install(*options); });
}

}  // namespace tavlen::cli
