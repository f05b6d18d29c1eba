#pragma once

#include <string_view>

#include "tavlen/foundation/base/API.h"
#include "tavlen/foundation/toml/TOMLError.h"
#include "tavlen/foundation/toml/TOMLNode.h"

namespace tavlen {

/// Reads a TOML 1.0 document in UTF-8; a byte order mark is skipped. Dates must have an offset, so
/// that they name a point in time; of a fraction of a second nine digits count. The character after
/// a backslash at the end of a line must be ASCII.
///
/// Limits: limits::kDocumentBytes, limits::kJSONValues values, limits::kJSONDepth containers in one
/// another, the parts of dotted keys and headers included, and 2^31 look-ups of tables: each part
/// of a dotted key or a header costs one for each table that such keys made before. Time is
/// otherwise linear in the text, up to a logarithm. The deepest text takes 750 kB of stack, so
/// threads with less must not call this. Errors: TOMLError, TOMLIntegerError among them, for the
/// first fault. Threads: any.
TAVLEN_API TOMLNode::Table readTOML(std::string_view text);

}  // namespace tavlen
