#pragma once

#include "cli/arguments/CommandLine.h"

namespace tavlen::cli {

/// Each adds its subcommand to `app`. One source file for each.
void addSourceCommand(Command app);
void addBuildCommand(Command app);
void addCheckCommand(Command app);
void addListCommand(Command app);
void addShowCommand(Command app);
void addNewCommand(Command app);
void addScriptCommand(Command app);
void addDeleteCommand(Command app);
void addInstallCommand(Command app);
void addUninstallCommand(Command app);
void addAppsCommand(Command app);
void addInfoCommand(Command app);
void addIconCommand(Command app);
void addExecutablesCommand(Command app);
void addCrashLogsCommand(Command app);
void addKillCommand(Command app);
void addRespringCommand(Command app);
void addHookCommand(Command app);
void addParamCommand(Command app);
void addOverrideCommand(Command app);
void addExportCommand(Command app);
void addImportCommand(Command app);
void addCollectionCommand(Command app);
void addWatchCommand(Command app);
void addClassesCommand(Command app);
void addMethodsCommand(Command app);
void addTypeCommand(Command app);

/// Adds `set` and `clear`, which are about the icon of a tweak, to the subcommand `icon`.
void addTweakIconCommands(Command group);

}  // namespace tavlen::cli
