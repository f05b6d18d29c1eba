#pragma once

#include <string_view>

#include "tavlen/foundation/plist/PropertyList.h"

namespace tavlen {

/// Reads the binary form ("bplist00") into a table with each stored object once, in the stored
/// order. Shared references stay shared, and cycles stay cycles.
///
/// Memory is at most a constant times the size of `bytes`, because objects that overlap are
/// refused. Also refused: references, lengths and offsets out of range; keys that are not strings;
/// strings that are not valid ASCII or UTF-16, as marked; and objects that XML lists do not have
/// (null, set). Throws invalidPropertyList().
PropertyList readBinaryPropertyList(std::string_view bytes);

}  // namespace tavlen
