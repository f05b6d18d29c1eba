#include <CLI/CLI.hpp>
#include <memory>
#include <string>

#include "cli/AppArgument.h"
#include "cli/ArgumentChecks.h"
#include "cli/Commands.h"
#include "cli/Console.h"
#include "cli/LookOptions.h"
#include "cli/StoredItem.h"

namespace tavlen::cli {

namespace {

struct Options {
  std::string name;
  std::string app;
  Look look;
};

int create(const Options& options) {
  const std::string bundleID = bundleIDOf(options.app);
  const std::shared_ptr<TweakFile> tweak =
      TweakFile::create(options.name, options.look.color, options.look.glyph, bundleID);
  announce(*tweak, GenericTweakDiffMode::create);
  if (!isInstalledApp(bundleID)) printWarning(bundleID + ": no app of that identifier is here");
  printData(tweak->id() + "\n");
  return 0;
}

}  // namespace

void addNewCommand(CLI::App& app, Action& action) {
  auto* command = app.add_subcommand("new", "Make a new tweak and print its identifier");
  const auto options = std::make_shared<Options>();
  command->add_option("NAME", options->name, "The tweak's name")
      ->required()
      ->check(notEmpty() & validUTF8());
  command->add_option("--app", options->app, kAppHelp)
      ->required()
      ->check(notEmpty() & validUTF8())
      ->type_name("APP");
  addLookOptions(*command, options->look);
  command->callback([options, &action] { action = [options] { return create(*options); }; });
}

}  // namespace tavlen::cli
