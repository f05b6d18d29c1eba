#include <memory>
#include <optional>
#include <stdexcept>
#include <string>

#include "cli/arguments/StoredItem.h"
#include "cli/commands/Commands.h"
#include "cli/items/ItemRow.h"
#include "cli/items/StoreLock.h"
#include "cli/terminal/Console.h"

namespace tavlen::cli {

namespace {

struct Options {
  std::string tweak;
  std::string file;
  bool json = false;
};

/// Stores the icon, and prints the tweak if the user wants it.
int store(const Options& options, const std::optional<Image>& icon) {
  const OpenedItem item = openedTweak(options.tweak);
  item.tweak()->file->writeCustomIcon(icon);
  if (options.json) printRow(item);
  return 0;
}

int set(const Options& options) {
  (void)storedTweak(options.tweak);  // a wrong name is reported before the input is awaited
  const std::optional<Image> icon = Image::decode(readInput(options.file));
  if (!icon) {
    throw std::runtime_error(shownInput(options.file) + ": is not a PNG or JPEG image of at most " +
                             std::to_string(Image::kLongestSide) + " pixels a side and " +
                             std::to_string(Image::kMostPixels) + " in all");
  }
  const StoreLock lock(options.tweak);
  return store(options, icon);
}

}  // namespace

void addTweakIconCommands(Command group) {
  const auto options = std::make_shared<Options>();
  const auto add = [&](const char* name, const char* help) {
    Command command = group.addCommand(name, help);
    command.text("TWEAK", options->tweak, kTweakHelp).required().notEmpty();
    command.flag("--json", options->json, "Print the tweak as a JSON object");
    return command;
  };
  Command setting = add("set", "Set a tweak's own icon");
  setting.text("FILE", options->file, "A PNG or JPEG image; - for the standard input")
      .required()
      .notEmpty();
  setting.run([options] { return set(*options); });
  Command clearing = add("clear", "Remove a tweak's own icon");
  runEdit(clearing, options->tweak, [options] { return store(*options, std::nullopt); });
}

}  // namespace tavlen::cli
