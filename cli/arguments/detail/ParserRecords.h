#pragma once

#include <string>
#include <vector>

#include "cli/arguments/detail/ParserState.h"
#include "cli/help/CommandRecord.h"

/// The parser's commands and options as the rest of the command sees them.
namespace tavlen::cli {

/// The user's word, so that the parser passes it on as an argument: it would read a method as the
/// option "-[", and "++" as the end of a subcommand.
std::string marked(std::string word);

/// The user's word again.
std::string unmarked(std::string word);

/// The command as plain data, with all its subcommands.
CommandRecord recordOf(const CLI::App& app, const ParserState& state);

/// An option as plain data.
OptionRecord recordOf(const CLI::Option& option, const ParserState& state);

/// The name in messages; see OptionRecord::title().
std::string titleOf(const CLI::Option& option);

/// The options of the command itself and of its groups, without the one for help.
std::vector<const CLI::Option*> optionsOf(const CLI::App& app);

/// Groups of options are commands without a name.
std::vector<const CLI::App*> groupsOf(const CLI::App& app);

/// `app` and the subcommands that the user chose, the outermost first.
std::vector<const CLI::App*> chosenPath(const CLI::App& app);

}  // namespace tavlen::cli
