#pragma once

#include <filesystem>
#include <string>

#include "tests/faults/injector/FaultInjector.h"

namespace tavlen::faults {

/// What in `log`, that of a run without faults, could lose a document in the folder `store` to a
/// power failure; empty where nothing could: no document is written in its place; what gets a
/// document's name is on the disk before; and the name is brought there after.
std::string orderBreaches(const Log& log, const std::filesystem::path& store);

}  // namespace tavlen::faults
