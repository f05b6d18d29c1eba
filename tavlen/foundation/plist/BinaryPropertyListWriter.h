#pragma once

#include <string>

#include "tavlen/foundation/plist/PropertyList.h"

namespace tavlen {

/// Writes what the root reaches in the binary form ("bplist00").
///
/// Objects stand in pre-order, a dictionary's keys before its values, members in the stored order.
/// Equal scalars are written once, a shared container once, so that any graph keeps its shape; no
/// depth is too deep. Throws EncodingError for a string that is no valid UTF-8.
std::string writeBinaryPropertyList(const PropertyList& list);

}  // namespace tavlen
