#pragma once

#include <map>
#include <optional>
#include <string>
#include <vector>

#include "cli/arguments/CommandLine.h"

namespace tavlen::cli {

/// What the handles of a CommandLine share.
struct ParserState {
  Action chosen;
  std::optional<std::string> answer;  ///< what Command::answer() leads to
  /// What Option::oneOf() accepts.
  std::map<const CLI::Option*, std::vector<std::string>> values;
};

}  // namespace tavlen::cli
