#include "cli/arguments/TweakArgument.h"

#include <exception>
#include <utility>

#include "cli/arguments/StoredItem.h"
#include "cli/terminal/Console.h"
#include "cli/terminal/ShownText.h"

namespace tavlen::cli {

std::string OpenedTweak::pathOf(const std::string& name) const {
  return folder.ends_with('/') ? folder + name : folder + "/" + name;
}

OpenedTweak openTweak(const std::string& argument) {
  OpenedTweak tweak;
  tweak.argument = argument;
  TweakFile::Opened opened = openedTweak(argument);
  tweak.file = std::move(opened.file);
  tweak.manifest = std::move(opened.manifest);
  tweak.ignoredKeys = std::move(opened.ignoredKeys);
  tweak.folder = isItemPath(argument) ? argument : tweak.file->url().string();
  try {
    tweak.script = tweak.file->readScript().value_or(std::string());
  } catch (const std::exception& error) {
    tweak.scriptIsUnreadable = true;
    printWarning("the script cannot be read and counts as empty: " + errorText(error));
  }
  return tweak;
}

}  // namespace tavlen::cli
