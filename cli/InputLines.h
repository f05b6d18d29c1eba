#pragma once

#include <string_view>

#include "tavlen/foundation/FunctionRef.h"

namespace tavlen::cli {

/// Gives each line of the standard input to `line`, without its end, which is a newline or a
/// carriage return and a newline; the last one may have none. The text is valid during the call
/// only. `pause` is called whenever more input has to be waited for, and at the end.
///
/// Holds no more than the longest line. Throws std::system_error where reading fails.
void forEachInputLine(FunctionRef<void(std::string_view)> line, FunctionRef<void()> pause);

}  // namespace tavlen::cli
