#include <CLI/CLI.hpp>
#include <cstdint>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>

#include "cli/AppArgument.h"
#include "cli/ArgumentChecks.h"
#include "cli/Commands.h"
#include "cli/Console.h"
#include "tavlen/bundles/InfoManager.h"
#include "tavlen/foundation/FileReplacement.h"

namespace tavlen::cli {

namespace {

struct Options {
  std::string app;
  std::string output;
  std::optional<std::string> name;
  std::optional<std::uint32_t> size;
};

Image chosenIcon(const InfoManager& app, const Options& options) {
  Image icon = options.name ? app.icon(*options.name) : app.icon();
  return options.size ? InfoManager::resizedIcon(icon, *options.size) : icon;
}

std::string iconFile(const Options& options) {
  const std::shared_ptr<IPA> ipa = appArgument(options.app);
  try {
    return namingInfo(*ipa, [&] { return chosenIcon(ipa->infoManager(), options).pngData(); });
  } catch (const InfoManager::Error& error) {
    throw std::runtime_error(options.app + ": " + error.description());
  }
}

}  // namespace

void addIconCommand(CLI::App& app, Action& action) {
  auto* command = app.add_subcommand(
      "icon", "Write an app's icon as a PNG file; set or clear the icon of a tweak");
  const auto options = std::make_shared<Options>();
  // Both are required, but not where a subcommand follows.
  auto* name = command->add_option("APP", options->app, kAppHelp)->check(notEmpty());
  auto* output = command
                     ->add_option("-o,--output", options->output,
                                  "The file to write, - for the standard output")
                     ->check(notEmpty())
                     ->type_name("FILE");
  command
      ->add_option("--name", options->name, "The icon's name as in Info.plist; the largest without")
      ->check(notEmpty())
      ->type_name("NAME");
  command->add_option("--size", options->size, "How many points the longer side gets")
      ->type_name("POINTS");
  addTweakIconCommands(*command, action);
  command->callback([command, name, output, options, &action] {
    if (!command->get_subcommands().empty()) {
      // A word too many falls through to here.
      if (*name || *output || options->name || options->size) {
        throw CLI::ExtrasError({options->app + options->output + options->name.value_or("")});
      }
      return;
    }
    for (const CLI::Option* option : {name, output}) {
      if (option->count() == 0) throw CLI::RequiredError(option->get_name());
    }
    action = [options] {
      const std::string file = iconFile(*options);
      if (options->output == "-") {
        printData(file);
      } else {
        replaceFile(options->output, file);
      }
      return 0;
    };
  });
}

}  // namespace tavlen::cli
