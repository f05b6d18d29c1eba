#include <csignal>
#include <exception>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "cli/arguments/RootOption.h"
#include "cli/classes/DumpChild.h"
#include "cli/commands/Commands.h"
#include "cli/items/StoreLock.h"
#include "cli/process/ErrorReport.h"
#include "cli/process/ProgramFolders.h"
#include "cli/terminal/LastLogMessage.h"
#include "cli/terminal/StandardStreams.h"
#include "tavlen/Version.h"
#include "tavlen/foundation/errors/MainBundle.h"
#include "tavlen/foundation/text/Log.h"

namespace {

constexpr int kFailure = 1;

/// Subcommands that help lists under one heading.
struct Group {
  const char* heading;
  std::vector<void (*)(tavlen::cli::Command)> commands;
};

/// Adds the subcommands in the order in which help lists them.
void addCommands(tavlen::cli::Command command) {
  using namespace tavlen::cli;
  const std::vector<Group> groups = {
      {"Make and change tweaks",
       {addNewCommand, addListCommand, addShowCommand, addDumpCommand, addApplyCommand,
        addEditCommand, addDiffCommand, addSetCommand, addScriptCommand, addDeleteCommand,
        addWatchCommand}},
      {"Hooks and values",
       {addHookCommand, addParamCommand, addResourceCommand, addOverrideCommand}},
      {"Look into apps",
       {addAppsCommand, addInfoCommand, addIconCommand, addExecutablesCommand, addClassesCommand,
        addMethodsCommand, addTypeCommand, addCrashLogsCommand}},
      {"Build and install",
       {addCheckCommand, addSourceCommand, addBuildCommand, addLocateCommand, addTryCommand,
        addInstallCommand, addUninstallCommand, addKillCommand, addRespringCommand}},
      {"Share", {addExportCommand, addImportCommand, addCollectionCommand}},
      {"Other", {addHelpCommand, addCompletionCommand}},
  };
  for (const Group& group : groups) {
    for (const auto add : group.commands) add(command);
    command.listUnder(group.heading);
  }
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
  tavlen::cli::RootOptions root;
  tavlen::cli::addRootOptions(command, root);
  tavlen::cli::addLockTimeoutOption(command);
  bool isVerbose = false;
  command.flag("--verbose", isVerbose, "Show the library's log messages");
  command
      .text(
          "--color", [](const std::string& /*text*/) {}, "When messages and help are coloured")
      .oneOf({"auto", "always", "never"})
      .typeName("WHEN");
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
  tavlen::cli::occupyClosedStreams();
  useDefaultSignals();
  try {
    tavlen::cli::dumpIfChild(argc, argv);
    return run(argc, argv);
  } catch (const std::exception& error) {
    tavlen::cli::reportError(error);
    return kFailure;
  }
}
