#pragma once

#include "cli/arguments/CommandLine.h"

/// The functions that add the subcommands to the command `app`. Each has its own source file.
///
/// A subcommand that edits stored items sets its action by runEdit() or prepareEdit(), or takes a
/// StoreLock itself after the part that may take long.
namespace tavlen::cli {

/// Adds `source`.
void addSourceCommand(Command app);
/// Adds `build`.
void addBuildCommand(Command app);
/// Adds `dump`.
void addDumpCommand(Command app);
/// Adds `apply`.
void addApplyCommand(Command app);
/// Adds `edit`.
void addEditCommand(Command app);
/// Adds `diff`.
void addDiffCommand(Command app);
/// Adds `locate`.
void addLocateCommand(Command app);
void addTryCommand(Command app);
/// Adds `check`.
void addCheckCommand(Command app);
/// Adds `list`.
void addListCommand(Command app);
/// Adds `show`.
void addShowCommand(Command app);
/// Adds `new`.
void addNewCommand(Command app);
/// Adds `set`.
void addSetCommand(Command app);
/// Adds `script`.
void addScriptCommand(Command app);
/// Adds `delete`.
void addDeleteCommand(Command app);
/// Adds `install`.
void addInstallCommand(Command app);
/// Adds `uninstall`.
void addUninstallCommand(Command app);
/// Adds `apps`.
void addAppsCommand(Command app);
/// Adds `info`.
void addInfoCommand(Command app);
/// Adds `icon`.
void addIconCommand(Command app);
/// Adds `executables`.
void addExecutablesCommand(Command app);
/// Adds `crash-logs`.
void addCrashLogsCommand(Command app);
/// Adds `kill`.
void addKillCommand(Command app);
/// Adds `respring`.
void addRespringCommand(Command app);
/// Adds `hook`.
void addHookCommand(Command app);
/// Adds `param`.
void addParamCommand(Command app);
/// Adds `resource`.
void addResourceCommand(Command app);
/// Adds `override`.
void addOverrideCommand(Command app);
/// Adds `export`.
void addExportCommand(Command app);
/// Adds `import`.
void addImportCommand(Command app);
/// Adds `collection`.
void addCollectionCommand(Command app);
/// Adds `watch`.
void addWatchCommand(Command app);
/// Adds `classes`.
void addClassesCommand(Command app);
/// Adds `methods`.
void addMethodsCommand(Command app);
/// Adds `type`.
void addTypeCommand(Command app);
/// Adds `help`.
void addHelpCommand(Command app);
/// Adds `completion`, and `complete`, which its scripts call.
void addCompletionCommand(Command app);

/// Adds `set` and `clear`, which edit the icon of a tweak, to the subcommand `icon`.
void addTweakIconCommands(Command group);

/// Adds `insert`, `remove` and `move`, which edit arrays and dictionaries, to the subcommand
/// `param`.
void addParamItemCommands(Command group);

}  // namespace tavlen::cli
