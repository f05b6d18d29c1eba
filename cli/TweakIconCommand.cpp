#include <CLI/CLI.hpp>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>

#include "cli/ArgumentChecks.h"
#include "cli/Commands.h"
#include "cli/Console.h"
#include "cli/StoredItem.h"

namespace tavlen::cli {

namespace {

int set(const std::string& name, const std::string& file) {
  const std::shared_ptr<TweakFile> tweak = storedTweak(name);
  const std::optional<Image> icon = Image::decode(readInput(file));
  if (!icon) throw std::runtime_error(file + ": is no PNG or JPEG image, or one that is too large");
  tweak->writeCustomIcon(icon);
  return 0;
}

}  // namespace

void addTweakIconCommands(CLI::App& group, Action& action) {
  const auto tweak = std::make_shared<std::string>();
  const auto file = std::make_shared<std::string>();
  auto* setting = group.add_subcommand("set", "Give a tweak an icon of its own");
  setting->add_option("TWEAK", *tweak, kTweakHelp)->required()->check(notEmpty());
  setting->add_option("FILE", *file, "A PNG or JPEG image; - for the standard input")
      ->required()
      ->check(notEmpty());
  setting->callback(
      [tweak, file, &action] { action = [tweak, file] { return set(*tweak, *file); }; });
  auto* clearing = group.add_subcommand("clear", "Take a tweak's own icon away");
  clearing->add_option("TWEAK", *tweak, kTweakHelp)->required()->check(notEmpty());
  clearing->callback([tweak, &action] {
    action = [tweak] {
      storedTweak(*tweak)->writeCustomIcon(std::nullopt);
      return 0;
    };
  });
}

}  // namespace tavlen::cli
