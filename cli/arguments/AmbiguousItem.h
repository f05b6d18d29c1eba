#pragma once

#include <string>

#include "tavlen/store/FoundItems.h"

namespace tavlen::cli {

/// Prints that `text` names several stored items, and a table of these, whose identifiers tell them
/// apart. Throws ReportedError.
[[noreturn]] void refuseAmbiguous(const std::string& text, const FoundItems& found);

}  // namespace tavlen::cli
