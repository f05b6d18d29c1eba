#pragma once

#include <map>
#include <string>
#include <vector>

#include "cli/arguments/CommandLine.h"

namespace tavlen::cli {

/// What the handles of a CommandLine share.
struct ParserState {
  Action chosen;
  /// What Option::oneOf() accepts.
  std::map<const CLI::Option*, std::vector<std::string>> values;
};

}  // namespace tavlen::cli
