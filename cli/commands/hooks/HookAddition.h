#pragma once

#include "cli/commands/Commands.h"

namespace tavlen::cli {

/// Adds the subcommand `add` to `hook`: a whole hook, with its parameters and their files.
void addHookAddition(Command group);

}  // namespace tavlen::cli
