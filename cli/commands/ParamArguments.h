#pragma once

#include <string>

#include "cli/arguments/CommandLine.h"
#include "cli/arguments/ParameterAddress.h"
#include "tavlen/editing/HookManager.h"
#include "tavlen/foundation/base/FunctionRef.h"

/// Arguments that several subcommands of `param` have. Parsing stores them in the structs, which
/// must live as long as the command.
namespace tavlen::cli {

/// The hook, and the place in it, that a subcommand works on.
struct ParamTarget {
  std::string tweak;    ///< as the user wrote it, like all members
  std::string hook;     ///< as hookArgument() takes it
  std::string address;  ///< empty for the whole hook

  /// The prefix of error messages: the tweak, the hook and the address.
  std::string place() const;
};

/// A new parameter.
struct ParamValue {
  std::string text;       ///< as parseTypedValue() takes it
  bool replaces = false;  ///< whether a file may replace a resource of the same name
};

/// Adds TWEAK, HOOK and ADDRESS, and returns ADDRESS, which is optional.
Option addParamTarget(Command command, ParamTarget& target, const char* addressHelp = kAddressHelp);

/// Adds VALUE and `--replace`.
void addParamValue(Command command, ParamValue& value);

/// Calls `edit` for the hook of `target`; for subcommands of prepareEdit(). Throws what
/// openedTweak() throws, and std::runtime_error, which begins with the place, for what
/// hookArgument() and `edit` throw.
void editHook(const ParamTarget& target, FunctionRef<void(const HookManager&)> edit);

}  // namespace tavlen::cli
