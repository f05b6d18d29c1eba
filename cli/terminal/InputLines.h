#pragma once

#include <string_view>

#include "tavlen/foundation/base/FunctionRef.h"

namespace tavlen::cli {

/// Gives each line of the standard input to `line`, without the newline at its end and a carriage
/// return before that; the last one may have no newline. The text is valid during the call only.
/// `pause` is called before each reading that may have to wait, and at the end.
///
/// Holds no more than the longest line. Throws std::system_error where reading fails, and for a
/// line of more than 16 MiB.
void forEachInputLine(FunctionRef<void(std::string_view)> line, FunctionRef<void()> pause);

}  // namespace tavlen::cli
