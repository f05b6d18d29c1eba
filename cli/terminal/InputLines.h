#pragma once

#include <string_view>

#include "tavlen/foundation/base/FunctionRef.h"

namespace tavlen::cli {

/// Calls `line` for each line of the standard input, without its LF or CRLF. The last line need not
/// end in one. The text is valid only during the call. Calls `pause` before each read that may
/// block, and at the end.
///
/// Memory: the longest line. Throws std::system_error if reading fails, and for a line of more than
/// 16 MiB.
void forEachInputLine(FunctionRef<void(std::string_view)> line, FunctionRef<void()> pause);

}  // namespace tavlen::cli
