#include <CLI/CLI.hpp>
#include <cerrno>
#include <exception>
#include <iostream>
#include <string>
#include <string_view>
#include <system_error>
#include <vector>

#include "cli/Commands.h"
#include "cli/ErrorReport.h"
#include "cli/Installation.h"
#include "cli/RootOption.h"
#include "tavlen/foundation/Log.h"
#include "tavlen/foundation/MainBundle.h"

namespace {

constexpr int kFailure = 1;
constexpr int kUsage = 2;

/// Says what is wrong with the arguments, or prints the help that they asked for; gives the exit
/// status.
int report(const CLI::App& app, const CLI::ParseError& error) {
  const std::vector<std::string> unknown = app.remaining(true);
  // The parser looks for what is missing first, but an unknown word is why it is missing.
  const bool isMistyped = dynamic_cast<const CLI::RequiredError*>(&error) && !unknown.empty();
  const int status = isMistyped ? app.exit(CLI::ExtrasError(unknown)) : app.exit(error);
  if (!std::cout.flush()) {
    throw std::system_error(errno, std::generic_category(), "standard output");
  }
  return status == 0 ? 0 : kUsage;
}

int run(int argc, char** argv) {
  CLI::App app("Makes, builds and installs app tweaks, and looks at the apps of a device.",
               "tavlen");
  app.set_version_flag("--version", "tavlen " TAVLEN_VERSION);
  app.require_subcommand(1);
  // --root may stand behind the subcommand, too.
  app.fallthrough();
  std::string root;
  tavlen::cli::addRootOption(app, root);
  bool isVerbose = false;
  app.add_flag("--verbose", isVerbose, "Show what the library logs");
  tavlen::cli::Action action;
  tavlen::cli::addSourceCommand(app, action);
  tavlen::cli::addBuildCommand(app, action);
  tavlen::cli::addCheckCommand(app, action);
  tavlen::cli::addListCommand(app, action);
  tavlen::cli::addShowCommand(app, action);
  tavlen::cli::addNewCommand(app, action);
  tavlen::cli::addScriptCommand(app, action);
  tavlen::cli::addDeleteCommand(app, action);
  tavlen::cli::addInstallCommand(app, action);
  tavlen::cli::addUninstallCommand(app, action);
  tavlen::cli::addAppsCommand(app, action);
  tavlen::cli::addInfoCommand(app, action);
  tavlen::cli::addIconCommand(app, action);
  tavlen::cli::addExecutablesCommand(app, action);
  tavlen::cli::addCrashLogsCommand(app, action);
  tavlen::cli::addKillCommand(app, action);
  tavlen::cli::addRespringCommand(app, action);
  tavlen::cli::addHookCommand(app, action);
  tavlen::cli::addParamCommand(app, action);
  tavlen::cli::addOverrideCommand(app, action);
  tavlen::cli::addExportCommand(app, action);
  tavlen::cli::addImportCommand(app, action);
  tavlen::cli::addCollectionCommand(app, action);
  tavlen::cli::addWatchCommand(app, action);
  tavlen::cli::addClassesCommand(app, action);
  tavlen::cli::addMethodsCommand(app, action);
  tavlen::cli::addTypeCommand(app, action);
  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    return report(app, error);
  }
  tavlen::MainBundle::setURL(tavlen::cli::resourceFolder());
  tavlen::cli::useRoot(root);
  tavlen::setLogSink(isVerbose ? tavlen::LogSink(tavlen::logToStandardError)
                               : [](std::string_view /*message*/) {});
  return action();
}

}  // namespace

int main(int argc, char** argv) {
  try {
    return run(argc, argv);
  } catch (const std::exception& error) {
    tavlen::cli::reportError(error);
    return kFailure;
  }
}
