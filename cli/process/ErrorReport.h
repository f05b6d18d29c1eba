#pragma once

#include <exception>

namespace tavlen::cli {

/// Writes `tavlen: error: ...` as one line to the standard error stream; for an exception of the
/// transpiler, also the script's call stack. A ReportedError writes nothing.
void reportError(const std::exception& error);

}  // namespace tavlen::cli
