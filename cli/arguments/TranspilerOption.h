#pragma once

#include <filesystem>
#include <string>

#include "cli/arguments/CommandLine.h"

namespace tavlen::cli {

/// Adds `--transpiler DIR` to `command`; parsing stores the folder in `folder`, which must live as
/// long as the command.
void addTranspilerOption(Command command, std::string& folder);

/// The folder that contains ob.js: `folder`, or the command's own one if that is empty. Throws if
/// the script in `folder` is no transpiler, or cannot be read.
std::filesystem::path transpilerFolder(const std::string& folder);

}  // namespace tavlen::cli
