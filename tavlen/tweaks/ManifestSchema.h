#pragma once

#include <string>

namespace tavlen {

/// The JSON Schema of a tweak's Manifest.json, as JSON; always the same text. Threads: any.
std::string manifestSchema();

}  // namespace tavlen
