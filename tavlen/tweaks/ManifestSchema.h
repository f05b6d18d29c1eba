#pragma once

#include <string>

#include "tavlen/foundation/base/API.h"

namespace tavlen {

/// The JSON Schema of a tweak's Manifest.json, as JSON; always the same text. Threads: any.
TAVLEN_API std::string manifestSchema();

}  // namespace tavlen
