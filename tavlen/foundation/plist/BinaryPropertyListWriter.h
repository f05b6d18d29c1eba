#pragma once

#include <string>

#include "tavlen/foundation/base/API.h"
#include "tavlen/foundation/plist/PropertyList.h"

namespace tavlen {

/// Writes everything reachable from the root in the binary form ("bplist00").
///
/// Objects are written in pre-order, a dictionary's keys before its values, members in the stored
/// order. Equal scalars are written once, and so are shared containers, so the shape of any graph
/// is kept. Depth is not limited. Throws EncodingError for a string that is not valid UTF-8.
TAVLEN_API std::string writeBinaryPropertyList(const PropertyList& list);

}  // namespace tavlen
