#include "cli/items/ItemRow.h"

#include <filesystem>
#include <system_error>

#include "cli/arguments/StoredItem.h"
#include "cli/items/ActiveTweak.h"
#include "cli/terminal/ShownText.h"
#include "tavlen/foundation/text/Unicode.h"
#include "tavlen/items/GlyphNames.h"
#include "tavlen/items/TweaksDirectory.h"
#include "tavlen/store/TweakManager.h"
#include "tavlen/tweaks/TweakFile.h"

namespace tavlen::cli {

namespace {

ItemRow rowOf(const TweakProtocol& item, bool isInstalled) {
  ItemRow row;
  row.kind = kindOf(item);
  row.isInstalled = isInstalled;
  row.isStored = isInStore(item);
  row.id = wellFormedUTF8(item.id());
  row.path = wellFormedUTF8(item.url().native());
  return row;
}

}  // namespace

ItemRow rowOf(const TweakProtocol& item, const TweakConfiguration& configuration) {
  return rowOf(item, configuration, isActiveTweak(configuration.bundleID(), item.id()));
}

ItemRow rowOf(const TweakProtocol& item, const TweakConfiguration& configuration,
              bool isInstalled) {
  ItemRow row = rowOf(item, isInstalled);
  row.name = configuration.name();
  row.bundleID = configuration.bundleID();
  row.color = rawValue(configuration.color());
  row.glyph = glyphText(configuration.glyph());
  return row;
}

ItemRow rowOf(const BrokenItem& broken, bool isInstalled) {
  ItemRow row = rowOf(*broken.item, isInstalled);
  row.error = wellFormedUTF8(broken.error);
  return row;
}

ItemRow rowOfRecord(const std::string& id, const std::string& bundleID) {
  ItemRow row;
  row.kind = TweakFile::isValidID(id) ? "tweak" : "collection";
  row.bundleID = wellFormedUTF8(bundleID);
  row.isInstalled = true;
  row.isStored = false;
  row.id = wellFormedUTF8(id);
  return row;
}

ItemRow rowOfInstalled(const std::string& id, const std::string& bundleID) {
  for (const auto& [item, configuration] : TweakManager::listedTweaks()) {
    if (item->id() == id) return rowOf(*item, configuration, true);
  }
  if (const std::optional<BrokenItem> broken = TweakManager::brokenWithID(id))
    return rowOf(*broken, true);
  return rowOfRecord(id, bundleID);
}

bool isInStore(const TweakProtocol& item) {
  const std::filesystem::path store = TweaksDirectory::url();
  const std::filesystem::path folder = std::filesystem::absolute(item.url()).parent_path();
  std::error_code ignored;
  return folder == store || std::filesystem::equivalent(folder, store, ignored);
}

void printRow(const OpenedItem& item) {
  printData(shownJSON(rowOf(*item.item(), item.configuration())) + "\n");
}

}  // namespace tavlen::cli
