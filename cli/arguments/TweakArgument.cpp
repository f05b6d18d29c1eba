#include "cli/arguments/TweakArgument.h"

#include <stdexcept>

#include "cli/arguments/StoredItem.h"
#include "cli/terminal/Console.h"

namespace tavlen::cli {

std::string OpenedTweak::pathOf(const std::string& name) const {
  return folder.ends_with('/') ? folder + name : folder + "/" + name;
}

OpenedTweak openTweak(const std::string& argument) {
  OpenedTweak tweak;
  tweak.argument = argument;
  tweak.file = storedTweak(argument);
  tweak.folder = isItemPath(argument) ? argument : tweak.file->url().string();
  try {
    tweak.manifest = tweak.file->manifest();
  } catch (const LocalizedError& error) {
    // It was there a moment ago.
    throw std::runtime_error(tweak.pathOf("Manifest.json") + ": " + error.description());
  }
  try {
    tweak.script = tweak.file->readScript().value_or(std::string());
  } catch (const std::exception& error) {
    tweak.scriptIsUnreadable = true;
    printWarning("the script cannot be read and counts as empty: " + std::string(error.what()));
  }
  return tweak;
}

}  // namespace tavlen::cli
