#include <CLI/CLI.hpp>
#include <exception>

#include "cli/Commands.h"
#include "cli/ErrorReport.h"
#include "cli/Installation.h"
#include "tavlen/foundation/MainBundle.h"

namespace {

constexpr int kFailure = 1;
constexpr int kUsage = 2;

int run(int argc, char** argv) {
  CLI::App app("Builds and checks app tweaks.", "tavlen");
  app.set_version_flag("--version", "tavlen " TAVLEN_VERSION);
  app.require_subcommand(1);
  tavlen::cli::Action action;
  tavlen::cli::addSourceCommand(app, action);
  tavlen::cli::addBuildCommand(app, action);
  tavlen::cli::addCheckCommand(app, action);
  tavlen::cli::addInfoCommand(app, action);
  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    return app.exit(error) == 0 ? 0 : kUsage;
  }
  tavlen::MainBundle::setURL(tavlen::cli::resourceFolder());
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
