#pragma once

#include <string_view>

#include "tavlen/foundation/plist/PropertyList.h"

namespace tavlen {

/// Reads the binary form ("bplist00") into a table: each stored object once, in the stored order,
/// so that shared references stay shared and cycles stay cycles.
///
/// Memory is bounded by a constant times the size of `bytes`: objects that overlap are refused.
/// Refused as well: references, lengths and offsets out of range, keys that are no strings, text
/// that is no ASCII or no well-formed UTF-16 as its object says, and objects that other property
/// lists lack (null, set). Throws invalidPropertyList().
PropertyList readBinaryPropertyList(std::string_view bytes);

}  // namespace tavlen
