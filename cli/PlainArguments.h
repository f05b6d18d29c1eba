#pragma once

#include <CLI/CLI.hpp>
#include <string>
#include <vector>

namespace tavlen::cli {

/// Adds the positional arguments `name`, one or more, which are taken just as they stand. Of other
/// lists of arguments, the parser takes one in brackets apart: `[4i]` becomes `4i`.
CLI::Option* addPlainArguments(CLI::App& command, const std::string& name,
                               std::vector<std::string>& values, const std::string& description);

}  // namespace tavlen::cli
