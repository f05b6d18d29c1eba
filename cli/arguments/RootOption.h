#pragma once

#include <string>

#include "cli/arguments/CommandLine.h"

namespace tavlen::cli {

/// Adds --root, which TAVLEN_ROOT stands in for; the folder goes to `root`.
void addRootOption(Command app, std::string& root);

/// Makes `root` the device's root, for this process and the programs that it starts. Nothing for an
/// empty text.
void useRoot(const std::string& root);

}  // namespace tavlen::cli
