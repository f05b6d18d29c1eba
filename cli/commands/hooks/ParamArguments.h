#pragma once

#include <optional>
#include <string>
#include <tuple>
#include <vector>

#include "cli/arguments/CommandLine.h"
#include "cli/arguments/ParameterAddress.h"
#include "cli/arguments/StoredItem.h"
#include "cli/arguments/TypedValue.h"
#include "cli/tweaks/ResourceImport.h"
#include "cli/tweaks/TweakForReading.h"
#include "tavlen/editing/HookManager.h"
#include "tavlen/foundation/base/FunctionRef.h"

/// Arguments that several subcommands of `param` have. Parsing stores them in the structs, which
/// must live as long as the command.
namespace tavlen::cli {

/// The hook, and the place in it, that a subcommand works on.
struct ParamTarget {
  std::string tweak;    ///< as the user wrote it, like all texts here
  std::string hook;     ///< as hookArgument() takes it
  std::string address;  ///< empty for the whole hook
  bool json = false;    ///< whether to print the result as JSON

  /// The prefix of error messages: the tweak, the hook and the address.
  std::string place() const;
};

/// A new parameter.
struct ParamValue {
  std::string text;       ///< as parseTypedValue() takes it
  bool replaces = false;  ///< whether a file may replace a resource of the same name
};

/// What an edit made or changed, as `--json` prints it.
struct ParamRow {
  std::string address;                      ///< where the parameter or the pair is, or was
  std::optional<ParameterContainer> key;    ///< of a new pair
  std::optional<ParameterContainer> value;  ///< absent if it was only moved or removed

  static constexpr auto codedFields() {
    return std::tuple{requiredField("address", &ParamRow::address),
                      optionalField("key", &ParamRow::key),
                      optionalField("value", &ParamRow::value)};
  }
};

/// Adds TWEAK, HOOK and ADDRESS, and returns ADDRESS, which is optional.
Option addParamTarget(Command command, ParamTarget& target, const char* addressHelp = kAddressHelp,
                      const char* tweakHelp = kTweakHelp);

/// Adds TWEAK, HOOK and a required ADDRESS, and `--json`, for a subcommand that edits.
void addEditedParam(Command command, ParamTarget& target, const char* addressHelp = kAddressHelp);

/// Adds VALUE and `--replace`.
void addParamValue(Command command, ParamValue& value);

/// Adds `--replace`.
void addReplaceFlag(Command command, bool& replaces);

/// Starts the imports of the files among `values`, as importResources() does. A mere name of which
/// there is a resource but no file in the current folder names the resource.
std::vector<ResourceImport> startImports(const std::vector<TypedValue>& values,
                                         const TweakFile& tweak, bool replaces);

/// Warns of each file in `parameter`, of the tweak of `target`, that is not in its resources:
/// its printed form cannot be read back.
void warnOfMissingResources(const ParamTarget& target, const OpenedTweak& tweak,
                            const Parameter& parameter);

/// Lets `edit` change the hook of `target`, stores it and prints what `edit` returns if JSON was
/// asked for; for subcommands of prepareEdit(). Throws what openedTweak() throws, and
/// std::runtime_error, which begins with the place, for what hookArgument() and `edit` throw.
/// Returns the changed hook.
Hook editHook(const ParamTarget& target,
              FunctionRef<ParamRow(Hook& hook, const TweakFile& tweak)> edit);

}  // namespace tavlen::cli
