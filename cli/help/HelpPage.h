#pragma once

#include <string>

#include "cli/help/CommandRecord.h"

namespace tavlen::cli {

/// The help for a command, folded to the terminal's width, with coloured headings on a terminal:
/// for the command itself its subcommands, one a line; for a subcommand all its arguments.
std::string helpPage(const CommandPath& path);

/// "tavlen build [OPTION...] TWEAK".
std::string usageOf(const CommandPath& path);

/// The names and the placeholder: "-o, --output DIR".
std::string labelOf(const OptionRecord& option);

/// The help of an option with its conditions, without the full stop.
std::string describedHelp(const OptionRecord& option);

/// "Exactly one of ITEM or --app".
std::string ruleText(const OptionRule& rule);

}  // namespace tavlen::cli
