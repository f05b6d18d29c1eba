#include <memory>
#include <optional>
#include <stdexcept>
#include <string>

#include "cli/arguments/StoredItem.h"
#include "cli/commands/Commands.h"
#include "cli/terminal/Console.h"
#include "cli/work/StoreLock.h"

namespace tavlen::cli {

namespace {

int set(const std::string& name, const std::string& file) {
  const std::shared_ptr<TweakFile> tweak = storedTweak(name);
  const std::optional<Image> icon = Image::decode(readInput(file));
  if (!icon) {
    throw std::runtime_error(file + ": is not a PNG or JPEG image of at most " +
                             std::to_string(Image::kLongestSide) + " pixels a side and " +
                             std::to_string(Image::kMostPixels) + " in all");
  }
  const StoreLock lock(name);
  tweak->writeCustomIcon(icon);
  return 0;
}

}  // namespace

void addTweakIconCommands(Command group) {
  const auto tweak = std::make_shared<std::string>();
  const auto file = std::make_shared<std::string>();
  Command setting = group.addCommand("set", "Set a tweak's own icon");
  setting.text("TWEAK", *tweak, kTweakHelp).required().notEmpty();
  setting.text("FILE", *file, "A PNG or JPEG image; - for the standard input")
      .required()
      .notEmpty();
  setting.run([tweak, file] { return set(*tweak, *file); });
  Command clearing = group.addCommand("clear", "Remove a tweak's own icon");
  clearing.text("TWEAK", *tweak, kTweakHelp).required().notEmpty();
  runEdit(clearing, *tweak, [tweak] {
    storedTweak(*tweak)->writeCustomIcon(std::nullopt);
    return 0;
  });
}

}  // namespace tavlen::cli
