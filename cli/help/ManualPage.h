#pragma once

#include <string>

#include "cli/help/CommandRecord.h"

namespace tavlen::cli {

/// The manual page of the command, with all subcommands, for man.
std::string manualPage(const CommandRecord& root);

}  // namespace tavlen::cli
