#pragma once

#include <string_view>

#include "tavlen/foundation/plist/PropertyList.h"

namespace tavlen {

/// Reads the XML form, in the encodings of XMLText.
///
/// Nothing outside `bytes` is opened. A document that declares entities, or has a tag with many
/// attributes, is refused (prescanXML()). The XML library's own limits apply: a depth of 256
/// elements, ten million bytes for a text. A dictionary whose only key is "CF$UID" with an integer
/// is a UID. The result is a tree; equal keys are kept. Throws invalidPropertyList().
PropertyList readXMLPropertyList(std::string_view bytes);

}  // namespace tavlen
