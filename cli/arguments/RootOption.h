#pragma once

#include <string>

#include "cli/arguments/CommandLine.h"

namespace tavlen::cli {

/// Adds --root, whose default is the environment variable TAVLEN_ROOT. Parsing stores it in `root`.
void addRootOption(Command app, std::string& root);

/// Makes `root` the device root of this process and its child processes; an empty text changes
/// nothing. Call it before starting threads. Throws std::runtime_error if it is not a folder.
void useRoot(const std::string& root);

}  // namespace tavlen::cli
