#pragma once

#include <functional>

namespace CLI {
class App;
}

namespace tavlen::cli {

/// What the chosen subcommand does, and the process's exit status. An exception is reported by
/// main.
using Action = std::function<int()>;

/// Each adds its subcommand to `app`; parsing sets `action` to the chosen one's. A file a
/// subcommand.
void addSourceCommand(CLI::App& app, Action& action);
void addBuildCommand(CLI::App& app, Action& action);
void addCheckCommand(CLI::App& app, Action& action);
void addListCommand(CLI::App& app, Action& action);
void addShowCommand(CLI::App& app, Action& action);
void addNewCommand(CLI::App& app, Action& action);
void addScriptCommand(CLI::App& app, Action& action);
void addDeleteCommand(CLI::App& app, Action& action);
void addInstallCommand(CLI::App& app, Action& action);
void addUninstallCommand(CLI::App& app, Action& action);
void addAppsCommand(CLI::App& app, Action& action);
void addInfoCommand(CLI::App& app, Action& action);
void addIconCommand(CLI::App& app, Action& action);
void addExecutablesCommand(CLI::App& app, Action& action);
void addCrashLogsCommand(CLI::App& app, Action& action);
void addKillCommand(CLI::App& app, Action& action);
void addRespringCommand(CLI::App& app, Action& action);
void addHookCommand(CLI::App& app, Action& action);
void addParamCommand(CLI::App& app, Action& action);
void addOverrideCommand(CLI::App& app, Action& action);

/// Adds `set` and `clear`, which are about the icon of a tweak, to the subcommand `icon`.
void addTweakIconCommands(CLI::App& group, Action& action);
void addExportCommand(CLI::App& app, Action& action);
void addImportCommand(CLI::App& app, Action& action);
void addCollectionCommand(CLI::App& app, Action& action);
void addWatchCommand(CLI::App& app, Action& action);
void addClassesCommand(CLI::App& app, Action& action);
void addMethodsCommand(CLI::App& app, Action& action);
void addTypeCommand(CLI::App& app, Action& action);

}  // namespace tavlen::cli
