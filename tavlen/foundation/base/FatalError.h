#pragma once

#include <string_view>

#include "tavlen/foundation/base/API.h"

namespace tavlen {

/// Writes `message` as one line to the standard error stream and aborts the process.
/// For mistakes of the programmer or of the installation only, never for input.
TAVLEN_API [[noreturn]] void fatalError(std::string_view message);

}  // namespace tavlen
