#include <cstdint>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>

#include "cli/arguments/AppArgument.h"
#include "cli/commands/Commands.h"
#include "cli/terminal/Console.h"
#include "cli/terminal/ShownText.h"
#include "cli/work/AppForReading.h"
#include "tavlen/bundles/InfoManager.h"
#include "tavlen/foundation/files/FileReplacement.h"

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
  const AppForReading app(options.app, AppForReading::Files::icon, options.name);
  const IPA& ipa = *app.ipa();
  try {
    return namingInfo(ipa, [&] { return chosenIcon(ipa.infoManager(), options).pngData(); });
  } catch (const InfoManager::Error& error) {
    throw std::runtime_error(options.app + ": " + errorText(error));
  }
}

int writeIcon(const Options& options) {
  const std::string file = iconFile(options);
  if (options.output == "-") {
    printData(file);
  } else {
    replaceFile(options.output, file);
  }
  return 0;
}

}  // namespace

void addIconCommand(Command app) {
  Command command =
      app.addCommand("icon", "Write an app's icon as a PNG file; set or clear a tweak's");
  const auto options = std::make_shared<Options>();
  // Both are required unless a subcommand follows.
  const Option name = command.text("APP", options->app, kReadAppHelp).notEmpty();
  const Option output =
      command.text("-o,--output", options->output, "The file to write, - for the standard output")
          .notEmpty()
          .typeName("FILE");
  command
      .text("--name", options->name,
            "The icon's name in Info.plist; the default is the largest icon")
      .notEmpty()
      .typeName("NAME");
  command.number("--size", options->size, "The length of the longer side in points")
      .typeName("POINTS");
  addTweakIconCommands(command);
  command.prepare([command, name, output, options]() -> Action {
    if (command.hasChosenCommand()) {
      // Surplus arguments of a subcommand are parsed as arguments of this command.
      if (name.isGiven() || output.isGiven() || options->name || options->size) {
        refuseUnexpected(options->app + options->output + options->name.value_or(""));
      }
      return nullptr;
    }
    name.requireGiven();
    output.requireGiven();
    return [options] { return writeIcon(*options); };
  });
}

}  // namespace tavlen::cli
