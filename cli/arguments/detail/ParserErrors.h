#pragma once

#include <string>
#include <vector>

#include "cli/arguments/detail/ParserState.h"

namespace CLI {
class ParseError;
}  // namespace CLI

namespace tavlen::cli {

/// What is wrong with the user's arguments, in one sentence. `app` has parsed `words`, and thrown
/// `error`, whose own text names neither the command nor what was expected.
std::string usageProblem(const CLI::App& app, const ParserState& state,
                         const std::vector<std::string>& words, const CLI::ParseError& error);

/// What is wrong with an option or an argument that the command does not have, below `app`.
std::string unexpectedText(const std::string& word, const CLI::App& app, const ParserState& state);

}  // namespace tavlen::cli
