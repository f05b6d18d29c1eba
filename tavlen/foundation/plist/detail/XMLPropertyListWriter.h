#pragma once

#include <string>

#include "tavlen/foundation/plist/PropertyList.h"

namespace tavlen {

/// Writes what the root reaches in the XML form, the keys of each dictionary in the order of their
/// bytes, the last of equal ones only.
///
/// XML has no references: a shared object is written out at each place. Throws EncodingError for
/// a list more than 250 containers deep (a cycle is one), for a million values more than the list
/// itself holds, for more than 256 MiB, for text that is no valid UTF-8 or holds characters that
/// XML lacks (most control characters), and for dates outside of the years 0 to 9999.
std::string writeXMLPropertyList(const PropertyList& list);

}  // namespace tavlen
