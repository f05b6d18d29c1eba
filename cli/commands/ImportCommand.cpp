#include <exception>
#include <memory>
#include <string>
#include <vector>

#include "cli/arguments/StoredItem.h"
#include "cli/commands/Commands.h"
#include "cli/terminal/Console.h"
#include "cli/terminal/ProgressLine.h"
#include "cli/terminal/ShownText.h"
#include "cli/work/StoreLock.h"
#include "tavlen/collections/TweakCollection.h"
#include "tavlen/collections/TweakCollectionManifest.h"
#include "tavlen/foundation/coding/CodingError.h"
#include "tavlen/store/TweakManager.h"

namespace tavlen::cli {

namespace {

void announceCreation(TweakProtocol& item) {
  if (const auto* collection = dynamic_cast<const TweakCollection*>(&item)) {
    for (const std::shared_ptr<TweakFile>& member : collection->manifest().tweaks()) {
      announce(*member, GenericTweakDiffMode::create);
    }
  }
  announce(item, GenericTweakDiffMode::create);
}

std::shared_ptr<TweakProtocol> importedItem(const std::string& file) {
  // Before the progress line, which would keep signals from ending the wait.
  const StoreLock lock = StoreLock::ofStore();
  const ProgressLine line("importing " + file);
  std::shared_ptr<TweakProtocol> item = TweakManager::decompressAt(file, line.progress().get());
  announceCreation(*item);
  return item;
}

int import(const std::vector<std::string>& files) {
  int status = 0;
  for (const std::string& file : files) {
    std::shared_ptr<TweakProtocol> item;
    try {
      item = importedItem(file);
    } catch (const DecodingError& error) {
      printError(file + ": Manifest.json: " + errorText(error));
      status = 1;
      continue;
    } catch (const std::exception& error) {
      const std::string text = errorText(error);
      // Errors of the file system may already name the file.
      printError(text.starts_with(file) ? text : std::string(file).append(": ").append(text));
      status = 1;
      continue;
    }
    printData(item->id() + "\n");
  }
  return status;
}

}  // namespace

void addImportCommand(Command app) {
  Command command =
      app.addCommand("import", "Import archives and print the identifiers of the new items");
  const auto files = std::make_shared<std::vector<std::string>>();
  command.texts("FILE", *files, "The archives, as written by export").notEmpty();
  command.run([files] { return import(*files); });
}

}  // namespace tavlen::cli
