#pragma once

#include "cli/classes/ClassDump.h"

namespace tavlen::cli {

/// Prints the dump as a JSON object, in pieces; docs/json.md describes its shape.
void printDump(const ClassDump& dump);

/// If the standard error stream is a terminal, prints how many classes and methods the dump has:
/// "214 classes, 3,120 methods in 3 images".
void printCounts(const ClassDump& dump);

}  // namespace tavlen::cli
