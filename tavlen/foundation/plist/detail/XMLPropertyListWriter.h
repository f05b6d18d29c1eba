#pragma once

#include <string>

#include "tavlen/foundation/plist/PropertyList.h"

namespace tavlen {

/// Writes everything reachable from the root in the XML form. The keys of a dictionary are sorted
/// by bytes; of equal keys, the last is written.
///
/// XML has no references, so a shared object is written at each place. Throws EncodingError for a
/// list more than 250 containers deep (a cycle is one), for a million values more than the list
/// itself holds, for more than 256 MiB of output, for text that is not valid UTF-8 or contains
/// characters that XML lacks (most control characters), and for dates outside of the years 0 to
/// 9999.
std::string writeXMLPropertyList(const PropertyList& list);

}  // namespace tavlen
