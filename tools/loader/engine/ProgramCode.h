#pragma once

#include <utility>

#include "tavlen/foundation/base/FunctionRef.h"
#include "tools/loader/base/ExceptionGuard.h"

namespace tavlen::loader {

/// What the program's code raised, on its way to the script that called it.
struct ProgramException {
  explicit ProgramException(Raised exception) : raised(std::move(exception)) {}

  Raised raised;
};

/// Runs `body`, code of the program that a script calls: hooks that it meets run, and the time is
/// not the script's. Throws ProgramException for whatever it raises or throws.
void runProgram(FunctionRef<void()> body);

}  // namespace tavlen::loader
