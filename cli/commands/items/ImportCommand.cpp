#include <cerrno>
#include <exception>
#include <filesystem>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>
#include <system_error>
#include <vector>

#include "cli/arguments/StoredItem.h"
#include "cli/commands/Commands.h"
#include "cli/items/ItemNames.h"
#include "cli/items/ItemRow.h"
#include "cli/items/StoreLock.h"
#include "cli/terminal/ProgressLine.h"
#include "cli/terminal/ShownText.h"
#include "tavlen/collections/TweakCollection.h"
#include "tavlen/collections/TweakCollectionManifest.h"
#include "tavlen/device/DevicePaths.h"
#include "tavlen/device/DeviceRoot.h"
#include "tavlen/foundation/coding/CodingError.h"
#include "tavlen/foundation/files/FileReplacement.h"
#include "tavlen/foundation/files/FileSystem.h"
#include "tavlen/foundation/files/TemporaryDirectory.h"
#include "tavlen/store/TweakManager.h"

namespace tavlen::cli {

namespace {

struct Options {
  std::vector<std::string> files;
  bool json = false;
};

/// Gives a new item and its members names that are free, and announces them.
void welcome(TweakProtocol& item, ItemNames& names) {
  if (const auto* collection = dynamic_cast<const TweakCollection*>(&item)) {
    for (const std::shared_ptr<TweakFile>& member : collection->manifest().tweaks()) {
      welcome(*member, names);
    }
  }
  names.takeFor(item);
  announce(item, GenericTweakDiffMode::create);
}

/// Imports an archive whose bytes came without a name. Its kind is found out by trying: the
/// document of a tweak is not one of a collection, and the other way round.
std::shared_ptr<TweakProtocol> decompressed(const std::string& archive, Progress* progress) {
  const TemporaryDirectory folder(DeviceRoot::shared().resolve(kApplicationSupportDir));
  const auto placed = [&](std::string_view extension) {
    std::filesystem::path file = folder.path() / "archive.";
    replaceFile(file += extension, archive);
    return file;
  };
  try {
    return TweakManager::decompressAt(placed(TweakFile::compressedExtension), progress);
  } catch (const DecodingError&) {
    return TweakManager::decompressAt(placed(TweakCollection::compressedExtension), progress);
  }
}

std::shared_ptr<TweakProtocol> importedItem(const std::string& file) {
  const bool isStream = file == "-";
  if (!isStream && !TweakManager::canHandle(file)) {
    if (!isTaken(file)) throw std::system_error(ENOENT, std::generic_category(), file);
    throw std::runtime_error(
        "is not named as an archive of a tweak (.tvx) or a collection (.tvxc)");
  }
  const std::string bytes = isStream ? readInput(file) : "";
  // Before the progress line, which would keep signals from ending the wait.
  const StoreLock lock = StoreLock::ofStore();
  ItemNames names;
  std::shared_ptr<TweakProtocol> item;
  {
    const ProgressLine line("importing " + file);
    Progress* const progress = line.progress().get();
    item = isStream ? decompressed(bytes, progress) : TweakManager::decompressAt(file, progress);
  }
  welcome(*item, names);
  return item;
}

/// Imports one archive and prints its item, or the error. Returns the item; null after an error.
std::shared_ptr<TweakProtocol> import(const std::string& file) {
  const std::string shown = shownInput(file);
  try {
    return importedItem(file);
  } catch (const DecodingError& error) {
    printError(shown + ": Manifest.json: " + errorText(error));
  } catch (const std::exception& error) {
    const std::string text = errorText(error);
    // Errors of the file system may already name the file.
    const bool namesFile = text.starts_with(shown) || text.starts_with("the " + shown);
    printError(namesFile ? text : std::string(shown).append(": ").append(text));
  }
  return nullptr;
}

int importAll(const Options& options) {
  int status = 0;
  std::vector<ItemRow> rows;
  for (const std::string& file : options.files) {
    const std::shared_ptr<TweakProtocol> item = import(file);
    if (item == nullptr) {
      status = 1;
    } else if (options.json) {
      rows.push_back(rowOf(*item, item->genericConfiguration()));
    } else {
      printData(item->id() + "\n");
    }
  }
  if (options.json) printData(shownJSON(rows) + "\n");
  return status;
}

}  // namespace

void addImportCommand(Command app) {
  Command command =
      app.addCommand("import", "Import archives and print the identifiers of the new items");
  const auto options = std::make_shared<Options>();
  command
      .texts("FILE", options->files,
             "The archives, as written by export; - for one from the standard input")
      .notEmpty();
  command.flag("--json", options->json, "Print the new items as a JSON array");
  command.run([options] { return importAll(*options); });
}

}  // namespace tavlen::cli
