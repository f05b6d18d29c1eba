#pragma once

#include <string>
#include <vector>

#include "cli/arguments/UsageError.h"
#include "cli/arguments/detail/ParserState.h"

namespace CLI {
class ParseError;
}  // namespace CLI

namespace tavlen::cli {

/// What is wrong with the user's arguments, in one sentence. `app` has parsed `words`, and thrown
/// `error`, whose own text names neither the command nor what was expected.
UsageError usageError(const CLI::App& app, const ParserState& state,
                      const std::vector<std::string>& words, const CLI::ParseError& error);

/// Throws UsageError for an argument of a command of which a subcommand was chosen: the parser
/// passes on what the subcommand does not know. Those of `app` itself are for all commands. `words`
/// are the user's.
void refuseStrayArguments(const CLI::App& app, const std::vector<std::string>& words);

}  // namespace tavlen::cli
