#include <csignal>
#include <exception>
#include <optional>
#include <string>
#include <string_view>

#include "cli/arguments/RootOption.h"
#include "cli/commands/Commands.h"
#include "cli/terminal/LastLogMessage.h"
#include "cli/work/DumpChild.h"
#include "cli/work/ErrorReport.h"
#include "cli/work/ProgramFolders.h"
#include "cli/work/StoreLock.h"
#include "tavlen/foundation/errors/MainBundle.h"
#include "tavlen/foundation/text/Log.h"

namespace {

constexpr int kFailure = 1;

/// Adds the subcommands in the order in which help lists them.
void addCommands(tavlen::cli::Command command) {
  tavlen::cli::addSourceCommand(command);
  tavlen::cli::addBuildCommand(command);
  tavlen::cli::addDumpCommand(command);
  tavlen::cli::addApplyCommand(command);
  tavlen::cli::addLocateCommand(command);
  tavlen::cli::addCheckCommand(command);
  tavlen::cli::addListCommand(command);
  tavlen::cli::addShowCommand(command);
  tavlen::cli::addNewCommand(command);
  tavlen::cli::addScriptCommand(command);
  tavlen::cli::addDeleteCommand(command);
  tavlen::cli::addInstallCommand(command);
  tavlen::cli::addUninstallCommand(command);
  tavlen::cli::addAppsCommand(command);
  tavlen::cli::addInfoCommand(command);
  tavlen::cli::addIconCommand(command);
  tavlen::cli::addExecutablesCommand(command);
  tavlen::cli::addCrashLogsCommand(command);
  tavlen::cli::addKillCommand(command);
  tavlen::cli::addRespringCommand(command);
  tavlen::cli::addHookCommand(command);
  tavlen::cli::addParamCommand(command);
  tavlen::cli::addResourceCommand(command);
  tavlen::cli::addOverrideCommand(command);
  tavlen::cli::addExportCommand(command);
  tavlen::cli::addImportCommand(command);
  tavlen::cli::addCollectionCommand(command);
  tavlen::cli::addWatchCommand(command);
  tavlen::cli::addClassesCommand(command);
  tavlen::cli::addMethodsCommand(command);
  tavlen::cli::addTypeCommand(command);
}

/// Undoes what the parent process may have left ignored: with SIGCHLD, no child can be waited for;
/// with SIGPIPE, a closed pipe would be an error message. Other ignored signals stay ignored, as
/// nohup wants it.
void useDefaultSignals() {
  for (const int signal : {SIGCHLD, SIGPIPE}) (void)std::signal(signal, SIG_DFL);
}

int run(int argc, char** argv) {
  tavlen::cli::CommandLine commandLine(
      "tavlen", "Makes, builds and installs app tweaks, and looks at the apps of a device.",
      "tavlen " TAVLEN_VERSION);
  tavlen::cli::Command command = commandLine.command();
  std::string root;
  tavlen::cli::addRootOption(command, root);
  tavlen::cli::addLockTimeoutOption(command);
  bool isVerbose = false;
  command.flag("--verbose", isVerbose, "Show the library's log messages");
  addCommands(command);
  if (const std::optional<int> status = commandLine.parse(argc, argv)) return *status;
  tavlen::MainBundle::setURL(tavlen::cli::resourceFolder());
  tavlen::cli::useRoot(root);
  tavlen::setLogSink(
      tavlen::cli::keepingLastMessage(isVerbose ? tavlen::LogSink(tavlen::logToStandardError)
                                                : [](std::string_view /*message*/) {}));
  tavlen::cli::StoreLock::requireForEdits();
  return commandLine.run();
}

}  // namespace

int main(int argc, char** argv) {
  useDefaultSignals();
  try {
    tavlen::cli::dumpIfChild(argc, argv);
    return run(argc, argv);
  } catch (const std::exception& error) {
    tavlen::cli::reportError(error);
    return kFailure;
  }
}
