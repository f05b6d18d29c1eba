#pragma once

#include <exception>

namespace tavlen::cli {

/// Writes what `error` says to the standard error stream: one line `tavlen: error: ...`, and for an
/// exception of the transpiler's script the call stack below it.
void reportError(const std::exception& error);

}  // namespace tavlen::cli
